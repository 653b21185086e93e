#include "reduce/objects/source_info_reduce_object.h"

#include <gtest/gtest.h>

#include <string>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr GUID kPixelType = "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid;

std::string Numbered(int i) { return std::string("t").append(std::to_string(i)); }

void Preset(CByteWriter& bytes, u8 i) {
    bytes.U8(i & 1).F64(1.5 + i).U8(1).F32(2.5f + i).U8(0).U32(100u + i).U8(1).F64(3.5 + i).F64(4.5 + i);
}

/// The stored record with as many preset records as asked, spelled field by field.
CByteWriter Record(u32 size, u32 version, u8 presets) {
    CByteWriter b;
    b.U32(size).U32(version);
    b.U32(0xFFFFFFFE);                             // source bits: -2
    b.Text("Camera \xC3\xA9", 64);                 // 12
    b.U8(1).U8(0).U8(1).U8(9);                     // flag A, flag B, fixed preset, source kind
    b.U16(640).U16(512);                           // 80
    b.U32(1).U32(2).U32(3).U32(0xFFFFFFFC).U8(1);  // left, top, right, bottom
    b.Guid(kPixelType);                            // 101
    b.U32(0xFFFFFFFB).U8(5).U8(2);                 // value, unit, scale
    b.U16(11).U16(12).U16(13).U16(14).U16(15);     // 123
    b.U64(130'000'000'000'000'000).U8(1);          // 133
    for (int i = 0; i < 13; ++i) b.Text(Numbered(i), i % 3 == 0 ? 32 : 16);
    b.F64(0.5).F64(0.75).U8(1);  // 430
    b.F64(1.25).F64(1.75).U8(1);
    b.U8(6);  // 464
    for (u8 i = 0; i < presets; ++i) {
        b.PadTo(1024 + 128u * i);
        Preset(b, i);
    }
    b.PadTo(1024 + 128u * presets);
    return b;
}

void ExpectPreset(const CSourceInfoReduceObject::SPresetInfo& preset, u8 i) {
    EXPECT_EQ(preset.enabled, (i & 1) != 0);
    EXPECT_EQ(preset.valueA, 1.5 + i);
    EXPECT_TRUE(preset.flagA);
    EXPECT_EQ(preset.scale, 2.5f + i);
    EXPECT_FALSE(preset.flagB);
    EXPECT_EQ(preset.frameCount, 100u + i);
    EXPECT_TRUE(preset.flagC);
    EXPECT_EQ(preset.valueB, 3.5 + i);
    EXPECT_EQ(preset.valueC, 4.5 + i);
}

/// What all stored forms hold.
void ExpectCommon(const CSourceInfoReduceObject& info) {
    EXPECT_EQ(info.sourceBits, -2);
    EXPECT_STREQ(info.cameraName, L"Camera \u00E9");
    EXPECT_TRUE(info.flagA);
    EXPECT_FALSE(info.flagB);
    EXPECT_EQ(info.sourceKind, 9);
    EXPECT_EQ(info.width, 640);
    EXPECT_EQ(info.height, 512);
    EXPECT_EQ(info.frameRect, (RECT{1, 2, 3, -4}));
    EXPECT_TRUE(info.frameRectSet);
    EXPECT_EQ(info.sourceValue, -5);
    EXPECT_EQ(info.baseUnit, TemperatureFactory);
    EXPECT_EQ(info.baseTempType, Kelvin);
    EXPECT_EQ(info.frameWidth, 11);
    EXPECT_EQ(info.frameHeight, 12);
    EXPECT_EQ(info.packetWidth, 13);
    EXPECT_EQ(info.packetHeight, 14);
    EXPECT_EQ(info.packetExtra, 15);
    EXPECT_EQ(info.time.GetTimestamp(), 130'000'000'000'000'000);
    EXPECT_TRUE(info.hasIdentity);
    EXPECT_STREQ(info.text0, L"t0");
    EXPECT_STREQ(info.text11, L"t11");
    for (u8 i = 0; i < 4; ++i) ExpectPreset(info.presets[i], i);
}

TEST(SourceInfo, RecordIsReadAndWrittenAsSpelled) {
    const CByteWriter record = Record(2048, 0x20000, 8);
    CSourceInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(record), 0x20000, 0));
    ExpectCommon(info);
    EXPECT_TRUE(info.fixedPreset);
    EXPECT_EQ(info.pixelType, kPixelType);
    EXPECT_STREQ(info.text12, L"t12");
    EXPECT_EQ(info.rangeAHigh, 0.75);
    EXPECT_EQ(info.rangeBLow, 1.25);
    EXPECT_EQ(info.presetCount, 6);
    for (u8 i = 4; i < 8; ++i) ExpectPreset(info.presets[i], i);
    EXPECT_EQ(SavedBytes(info, PersistInitialState), record.bytes);
}

TEST(SourceInfo, RecordOfFourPresets) {
    CSourceInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(Record(1536, 0x1FFFF, 4)), 0x10001, 0));
    ExpectCommon(info);
    EXPECT_EQ(info.presetCount, 4);
    for (u8 i = 4; i < 8; ++i) EXPECT_EQ(info.presets[i].scale, 0.0f);
    EXPECT_EQ(info.version, 0x20000u);
}

TEST(SourceInfo, FormAndSizeMustAgree) {
    struct {
        u32 size, version, blockVersion;
        std::size_t available;
        bool loads;
    } const cases[] = {
        {2048, 0x2FFFF, 0x20000, 2048, true},  {2048, 0x30000, 0x20000, 2048, false},
        {2048, 0x20000, 0x20000, 2047, false}, {1536, 0x20000, 0x20000, 2048, false},
        {2048, 0x10001, 0x10001, 2048, false}, {1536, 0x20000, 0x1FFFF, 2048, false},
        {1536, 0x10001, 0x10001, 1535, false}, {2048, 0x20000, 0xFFFFFFFF, 2048, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.size << " " << c.version << " " << c.blockVersion << " " << c.available);
        CSourceInfoReduceObject info;
        EXPECT_EQ(info.Load(FileOf(Record(c.size, c.version, 8), c.available), c.blockVersion, 0), c.loads);
        EXPECT_EQ(info.width, c.loads ? 640 : 0);
    }
}

CByteWriter OldStream(u32 blockVersion) {
    CByteWriter b;
    const auto text = [&](const std::string& s) { b.U32(s.size()).Text(s, s.size()); };
    b.U32(0xFFFFFFFE);
    text("Camera \xC3\xA9");
    b.U8(1).U8(0).U8(9).U16(640).U16(512);
    b.U32(2).U32(1).U32(0xFFFFFFFC).U32(3).U8(1);  // top, left, bottom, right
    if (blockVersion == 0) {
        b.U32(0);
    } else {
        b.Guid(kPixelType);
    }
    b.U32(0xFFFFFFFB).U8(5).U8(2).U16(11).U16(12).U16(13).U16(14).U16(15);
    b.U64(130'000'000'000'000'000).U8(1);
    for (int i = 0; i < 12; ++i) text(Numbered(i));
    for (u8 i = 0; i < 4; ++i) Preset(b, i);
    return b;
}

TEST(SourceInfo, OldStreams) {
    for (const u32 blockVersion : {0u, 1u, 0x10000u}) {
        SCOPED_TRACE(blockVersion);
        const CByteWriter stream = OldStream(blockVersion);
        CSourceInfoReduceObject info;
        info.fixedPreset = true;
        info.text12 = L"gone";
        info.presetCount = 8;
        info.presets[5].frameCount = 55;
        info.rangeALow = 5;
        ASSERT_TRUE(info.Load(FileOf(stream), blockVersion, 0));
        ExpectCommon(info);
        EXPECT_EQ(info.pixelType, blockVersion == 0 ? rootIRType : kPixelType);
        EXPECT_STREQ(info.text12, L"");
        EXPECT_EQ(info.presetCount, 4);
        // What the form lacks stays.
        EXPECT_TRUE(info.fixedPreset);
        EXPECT_EQ(info.presets[5].frameCount, 55u);
        EXPECT_EQ(info.rangeALow, 5);
        for (std::size_t size = 0; size < stream.bytes.size(); ++size) {
            ASSERT_FALSE(info.Load(FileOf(stream, size), blockVersion, 0)) << size;
        }
    }
}

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
    EXPECT_STREQ(read.cameraName, std::wstring(64, L'x').c_str());
    EXPECT_STREQ(read.text1, std::wstring(16, L'y').c_str());
    EXPECT_EQ(read.baseUnit, TemperatureUser);
    EXPECT_FALSE(read.gps.isValid());
    EXPECT_TRUE(info.Duplicate().Cast<CSourceInfoReduceObject>()->gps.isValid());
}

TEST(SourceInfo, DefaultLeavesWhatDescribesTheStream) {
    CSourceInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(Record(2048, 0x20000, 8)), 0x20000, 0));
    info.gps.status = 1;
    info.Default();
    EXPECT_EQ(info.frameRect, (RECT{1, 2, 3, -4}));
    EXPECT_TRUE(info.frameRectSet);
    EXPECT_EQ(info.pixelType, kPixelType);
    EXPECT_STREQ(info.cameraName, L"Unknown Camera");
    EXPECT_EQ(info.sourceBits, 16);
    EXPECT_EQ(info.sourceKind, 3);
    EXPECT_EQ(info.presetCount, 4);
    EXPECT_TRUE(info.presets[0].enabled);
    EXPECT_FALSE(info.presets[1].enabled);
    EXPECT_EQ(info.presets[7].scale, 1.0f);
    EXPECT_STREQ(info.text4, L"");
    EXPECT_FALSE(info.gps.isValid());
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
        EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(nullptr, 2048, counts, 3));
        EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(record.data(), 2047, counts, 3));
        EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(record.data(), 2048, counts, 9));
        EXPECT_TRUE(CSourceInfoReduceObject::UpdateNumFrames(record.data(), 2048, nullptr, 0));
        EXPECT_EQ(record, before);
        EXPECT_TRUE(CSourceInfoReduceObject::UpdateNumFrames(record.data(), 2048, counts, 3));
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

}  // namespace
}  // namespace ovix::reduce
