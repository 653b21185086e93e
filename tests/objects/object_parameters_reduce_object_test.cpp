#include "reduce/objects/object_parameters_reduce_object.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// Nine different values in the order of the record.
void Fill(CByteWriter& bytes) {
    bytes.F32(0.95f).F32(3.5f).F32(290.0f).F32(291.0f).F32(292.0f).F32(0.9f).F32(0.8f).F32(0.7f).F32(0.6f);
}
CByteWriter ParametersRecord(u32 version) {
    CByteWriter bytes;
    bytes.U32(96).U32(version).U8(1);
    Fill(bytes);
    bytes.U32(0x12345678).PadTo(96);
    return bytes;
}
void ExpectFilled(const CObjectParametersReduceObject& o) {
    EXPECT_TRUE(o.fromSource);
    const float expected[] = {0.95f, 3.5f, 290.0f, 291.0f, 292.0f, 0.9f, 0.8f, 0.7f, 0.6f};
    const float found[] = {o.emissivity,      o.distance,       o.reflectedTemp,   o.atmosphereTemp,
                           o.extOpticsTemp,   o.extOpticsTrans, o.atmosphereTrans, o.estimatedAtmosphereTrans,
                           o.relativeHumidity};
    for (u32 i = 0; i < std::size(found); ++i) EXPECT_EQ(found[i], expected[i]) << i;
    EXPECT_EQ(o.parameterMask, 0x12345678u);
}

TEST(ObjectParameters, RecordAndOldStream) {
    const CByteWriter record = ParametersRecord(0x10001);
    CObjectParametersReduceObject object;
    ASSERT_TRUE(object.Load(FileOf(record), 0x10001, 0));
    ExpectFilled(object);
    EXPECT_EQ(SavedBytes(object), record.bytes);

    CByteWriter stream;
    stream.U8(7);  // any byte but 0 is true
    Fill(stream);
    stream.U32(0x12345678);
    CObjectParametersReduceObject old;
    ASSERT_TRUE(old.Load(FileOf(stream), 0x10000, 0));
    ExpectFilled(old);
    EXPECT_FALSE(old.Load(FileOf(stream, stream.bytes.size() - 1), 0x10000, 0));
}

TEST(ObjectParameters, RecordsThatLieChangeNothing) {
    CByteWriter wrongSize = ParametersRecord(0x10001);
    wrongSize.bytes[0] = 95;
    const CByteWriter good = ParametersRecord(0x1FFFF);
    CObjectParametersReduceObject object;
    EXPECT_FALSE(object.Load(FileOf(wrongSize), 0x10001, 0));
    EXPECT_FALSE(object.Load(FileOf(ParametersRecord(0x20000)), 0x10001, 0));
    EXPECT_FALSE(object.Load(FileOf(good, 95), 0x10001, 0));
    EXPECT_EQ(object.emissivity, 1.0f);
    EXPECT_TRUE(object.Load(FileOf(good), 0x30000, 0));
}

TEST(ObjectParameters, DefaultsAreThoseOfTheStoredBits) {
    CObjectParametersReduceObject object;
    ASSERT_TRUE(object.Load(FileOf(ParametersRecord(0x10001)), 0x10001, 0));
    object.Default();
    CByteWriter record;
    record.U32(96).U32(0x10001).U8(0).U32(0x3F800000).U32(0x40000000).U32(0x43929333).U32(0x43929333).U32(0x43929333);
    record.U32(0x3F800000).U32(0).U32(0x3F800000).U32(0x3E99999A).U32(255).PadTo(96);
    EXPECT_EQ(SavedBytes(object), record.bytes);
    record.bytes[8] = 1;  // the initial state of a recording
    EXPECT_EQ(SavedBytes(object, PersistInitialState), record.bytes);
    EXPECT_FALSE(object.fromSource);
}

TEST(ObjectParameters, EqualsLooksAtWhatGoesIntoAModel) {
    const CObjectParametersReduceObject a;
    CObjectParametersReduceObject b;
    b.fromSource = true;
    b.estimatedAtmosphereTrans = 0.5f;
    b.parameterMask = 1;
    b.preset = 3;
    EXPECT_TRUE(a.Equals(&b));
    using CParameters = CObjectParametersReduceObject;
    for (const auto field : {&CParameters::emissivity, &CParameters::distance, &CParameters::reflectedTemp,
                             &CParameters::atmosphereTemp, &CParameters::extOpticsTemp, &CParameters::extOpticsTrans,
                             &CParameters::atmosphereTrans, &CParameters::relativeHumidity}) {
        CObjectParametersReduceObject c;
        c.*field += 1e-4f;
        EXPECT_FALSE(a.Equals(&c));
        EXPECT_FALSE(c.Equals(&a));
    }
    b.emissivity = 1.0f - 1e-6f;
    EXPECT_FALSE(a.Equals(&b));
    b.emissivity = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(a.Equals(&b));
}

TEST(ObjectParameters, CopyToTakesAllButTheVersion) {
    CObjectParametersReduceObject a;
    a.valid = false;
    a.preset = 2;
    a.parameterMask = 9;
    a.version = 1;
    CObjectParametersReduceObject b;
    a.CopyTo(&b);
    EXPECT_FALSE(b.valid);
    EXPECT_EQ(b.preset, 2);
    EXPECT_EQ(b.parameterMask, 9u);
    EXPECT_EQ(b.version, 0x10001u);
}

}  // namespace
}  // namespace ovix::reduce
