#include "reduce/objects/source_info_reduce_object.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "reduce/filters/frame_types.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "support/byte_writer.h"
#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using namespace test;

TEST(SourceInfo, TextsAreCutToTheirFields) {
    CSourceInfoReduceObject info;
    info.cameraName = std::wstring(70, L'x').c_str();
    info.text1 = std::wstring(16, L'y').c_str();
    info.baseUnit = static_cast<EUnit>(0x102);  // only the low byte has room
    info.gps.status = 4;
    CSourceInfoReduceObject read;
    const std::vector<u8> saved = SavedBytes(info);
    CByteWriter bytes;
    bytes.bytes = saved;
    ASSERT_TRUE(read.Load(FileOf(bytes), 0x20000, 0));
    EXPECT_EQ(Text(read.cameraName, read.text1), std::string(64, 'x') + ' ' + std::string(16, 'y') + ' ');
    EXPECT_TRUE(read.baseUnit == TemperatureUser && !read.gps.isValid());
    EXPECT_TRUE(info.Duplicate().Cast<CSourceInfoReduceObject>()->gps.isValid());
}

TEST(SourceInfo, DefaultLeavesWhatDescribesTheStream) {
    CSourceInfoReduceObject info;
    info.frameRect = {1, 2, 3, -4};
    info.frameRectSet = true;
    info.pixelType = frame_types::kF7M0;
    info.cameraName = info.text4 = L"x";
    info.sourceBits = info.sourceKind = info.presetCount = 9;
    info.presets[0].enabled = false;
    info.presets[1].enabled = true;
    info.presets[7].scale = 5;
    info.time.SetTimestamp(0);
    info.gps.status = 1;
    info.Default();
    EXPECT_TRUE(info.frameRect == (RECT{1, 2, 3, -4}) && info.frameRectSet);
    EXPECT_EQ(info.pixelType, frame_types::kF7M0);
    EXPECT_EQ(Text(info.cameraName, info.sourceBits, info.sourceKind, info.presetCount, info.presets[0].enabled,
                   info.presets[1].enabled, info.presets[7].scale, info.text4, info.gps.isValid()),
              "Unknown Camera 16 3 4 1 0 1  0 ");
    EXPECT_GT(info.time.GetTimestamp(), 130'000'000'000'000'000);
}

TEST(SourceInfo, CountsArePatchedInPlace) {
    const u32 counts[9] = {5, 0, 0x01020304, 0, 0, 0, 0, 0, 9};
    for (const bool fixed : {false, true}) {
        std::vector<u8> record(2049, 0xEE);
        record[78] = fixed;
        std::vector<u8> expected = record;
        for (u32 i = 0; i < 3; ++i) {
            u8* preset = expected.data() + 1024 + 128 * i;
            if (!fixed) preset[0] = counts[i] > 0;
            for (int byte = 0; byte < 4; ++byte) preset[15 + byte] = static_cast<u8>(counts[i] >> (8 * byte));
        }
        const std::vector<u8> before = record;
        const auto update = CSourceInfoReduceObject::UpdateNumFrames;
        EXPECT_FALSE(update(nullptr, 2048, counts, 3) || update(record.data(), 2047, counts, 3));
        EXPECT_FALSE(update(record.data(), 2048, counts, 9));
        EXPECT_TRUE(update(record.data(), 2048, nullptr, 0));
        EXPECT_EQ(record, before);
        EXPECT_TRUE(update(record.data(), 2048, counts, 3));
        EXPECT_EQ(record, expected);
    }
}

TEST(SourceInfo, PacketingIsPatchedInPlace) {
    std::vector<u8> record(2048, 0xEE);
    std::vector<u8> expected = record;
    const u8 patch[] = {0x02, 0x01, 0x04, 0x03, 0x06, 0x05};
    std::copy(std::begin(patch), std::end(patch), expected.begin() + 127);
    EXPECT_FALSE(CSourceInfoReduceObject::UpdatePacketing(record.data(), 2047, 1, 2, 3));
    EXPECT_FALSE(CSourceInfoReduceObject::UpdatePacketing(nullptr, 2048, 1, 2, 3));
    EXPECT_TRUE(CSourceInfoReduceObject::UpdatePacketing(record.data(), 2048, 0x0102, 0x0304, 0x0506));
    EXPECT_EQ(record, expected);
}

TEST(GPSData, InvalidRecordAndItsSwap) {
    test::CByteWriter expected;
    expected.U32(0).Zeros(12).F64(-1).F64(-1).F32(-1).U32(0).Zeros(24).F32(-1).Zeros(6).U16(0).F32(-1).F32(-1).F32(-1);
    expected.Text("WGS84", 28).U32(0).F64(-1).F64(-1).F32(-1).F32(-1).Zeros(32).U16(0).U16(53).U32(0);
    ASSERT_EQ(expected.bytes.size(), 184u);

    SGPSData gps;
    std::memset(static_cast<void*>(&gps), 0xAA, sizeof gps);
    gps.invalidate();
    EXPECT_EQ(std::memcmp(&gps, expected.bytes.data(), sizeof gps), 0);
    EXPECT_FALSE(gps.isValid());
    gps.status = 1;
    EXPECT_TRUE(gps.isValid());
    for (const bool swapped : {false, true, false}) {
        EXPECT_EQ(gps.isSwapped(), swapped);
        gps.swap();
    }
}

TEST(GPSData, SwapTurnsExactlyTheNumbers) {
    u8 bytes[184];
    for (int i = 0; i < 184; ++i) bytes[i] = static_cast<u8>(i);
    SGPSData gps;
    std::memcpy(static_cast<void*>(&gps), bytes, sizeof gps);
    gps.swap();
    // offset and width of each field that turns
    const int fields[][2] = {{0, 4},  {16, 8},  {24, 8},  {32, 4},  {36, 4},  {64, 4},  {74, 2},  {76, 4},  {80, 4},
                             {84, 4}, {116, 4}, {120, 8}, {128, 8}, {136, 4}, {140, 4}, {176, 2}, {178, 2}, {180, 4}};
    for (const auto& [offset, width] : fields) {
        for (int i = 0; i < width; ++i) bytes[offset + i] = static_cast<u8>(offset + width - 1 - i);
    }
    EXPECT_EQ(std::memcmp(&gps, bytes, sizeof gps), 0);
}

TEST(ObjectParameters, DefaultsAreThoseOfTheStoredBits) {
    CObjectParametersReduceObject object;
    object.fromSource = true;
    for (float* value : {&object.emissivity, &object.distance, &object.reflectedTemp, &object.extOpticsTrans})
        *value = 7;
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
    b.fromSource = true, b.estimatedAtmosphereTrans = 0.5f, b.parameterMask = 1, b.preset = 3;
    EXPECT_TRUE(a.Equals(&b));
    using CParameters = CObjectParametersReduceObject;
    for (const auto field : {&CParameters::emissivity, &CParameters::distance, &CParameters::reflectedTemp,
                             &CParameters::atmosphereTemp, &CParameters::extOpticsTemp, &CParameters::extOpticsTrans,
                             &CParameters::atmosphereTrans, &CParameters::relativeHumidity}) {
        CObjectParametersReduceObject c;
        c.*field += 1e-4f;
        EXPECT_FALSE(a.Equals(&c) || c.Equals(&a));
    }
    b.emissivity = 1.0f - 1e-6f;
    EXPECT_FALSE(a.Equals(&b));
    b.emissivity = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(a.Equals(&b));
}

TEST(ObjectParameters, CopyToTakesAllButTheVersion) {
    CObjectParametersReduceObject a;
    a.valid = false, a.preset = 2, a.parameterMask = 9, a.version = 1;
    CObjectParametersReduceObject b;
    a.CopyTo(&b);
    EXPECT_EQ(Text(b.valid, b.preset, b.parameterMask, b.version), Text(0, 2, 9, 0x10001));
}

}  // namespace
}  // namespace ovix::reduce
