#include "reduce/convert/factory_calibrations.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

TEST(CurlewFactoryCal, StoredForm) {
    test::CByteWriter bytes;
    bytes.F32(0.5f).U32(0xFFFFFFFE).U32(0xFFFFFFFD).F32(1.5f).U16(1).U16(2).U16(0xFFFF);
    for (int i = 0; i < 14; ++i) bytes.F32(10.0f + static_cast<float>(i));
    ASSERT_EQ(bytes.bytes.size(), 78u);

    CCurlewFactoryCalReduceObject cal;
    cal.valid = true;
    ASSERT_TRUE(cal.Load(test::FileOf(bytes), 0x10000, 0));
    EXPECT_FALSE(cal.valid);  // the caller's to set
    EXPECT_EQ(cal.nonlinearGain, 0.5f);
    EXPECT_EQ(cal.nonlinearOffset, -2);
    EXPECT_EQ(cal.offset, -3);
    EXPECT_EQ(cal.gain, 1.5f);
    EXPECT_EQ(cal.nonlinearOn, 1);
    EXPECT_EQ(cal.imgMin, 2);
    EXPECT_EQ(cal.imgMax, 0xFFFF);
    const float rest[] = {cal.planckR,   cal.planckB,       cal.planckF,        cal.atmAlpha1,    cal.atmAlpha2,
                          cal.atmBeta1,  cal.atmBeta2,      cal.atmX,           cal.overflowTemp, cal.upperTemp,
                          cal.lowerTemp, cal.underflowTemp, cal.radFitHighTemp, cal.radFitLowTemp};
    for (int i = 0; i < 14; ++i) EXPECT_EQ(rest[i], 10.0f + static_cast<float>(i)) << i;
    EXPECT_EQ(test::SavedBytes(cal), bytes.bytes);

    EXPECT_FALSE(cal.Load(test::FileOf(bytes, 77), 0x10000, 0));
    EXPECT_EQ(cal.radFitHighTemp, 22.0f);  // what was read stays
    EXPECT_EQ(cal.radFitLowTemp, 0.0f);
    EXPECT_FALSE(cal.Load(test::FileOf(bytes), 0x10001, 0));
    EXPECT_EQ(cal.nonlinearGain, 0.0f);
}

}  // namespace
}  // namespace ovix::reduce
