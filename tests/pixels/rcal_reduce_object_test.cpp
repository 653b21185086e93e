#include "reduce/pixels/correction_objects.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

TEST(RCalReduceObject, KeepsItsCalibrationThroughFilesCopiesAndDamage) {
    const auto object = reduceObjectFactory()->CreateByName(L"RCal").Cast<CRCalReduceObject>();
    ASSERT_TRUE(object);
    EXPECT_FALSE(object->valid);
    EXPECT_EQ(object->version, 0x10000u);
    EXPECT_TRUE(object->persist);
    object->valid = true;
    object->preset = 3;
    object->cal.SetPolynomial(6, 1, {0.5, 2});

    const auto copy = object->Duplicate().Cast<CRCalReduceObject>();
    const std::vector<u8> bytes = test::SavedBytes(*object);
    object->Default();
    EXPECT_FALSE(object->valid);
    EXPECT_EQ(object->preset, 3);
    EXPECT_FALSE(object->cal.HasCoefficients());
    EXPECT_TRUE(copy->valid);
    EXPECT_EQ(test::SavedBytes(*copy), bytes);

    test::CByteWriter record;
    record.bytes = bytes;
    ASSERT_TRUE(object->Load(test::FileOf(record), 0x77777, 0));
    TArray<double> coefficients;
    EXPECT_TRUE(object->cal.GetCoefficients(6, coefficients));
    EXPECT_EQ(coefficients.size(), 2u);
    EXPECT_FALSE(object->Load(test::FileOf(record, bytes.size() - 1), 0x10000, 0));
    EXPECT_TRUE(object->cal.HasCoefficients());
}

}  // namespace
}  // namespace ovix::reduce
