#include "reduce/objects/frame_info_reduce_object.h"

#include <cmath>
#include <cstring>

#include "reduce/filters/frame_types.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/object_file.h"

/// What objects of frames and sources do beside their stored forms.
namespace ovix::reduce {
namespace {

using namespace test;

std::string Row(const CFrameInfoReduceObject::SEntry& e) {
    EXPECT_STREQ(e, e.value);
    return Text(e.name, e.value, e.unit, e.type, e.exists);
}

TEST(FrameInfo, RowsStandForFieldsAndExtras) {
    CFrameInfoReduceObject info;
    info.time.SetYYDHMS(2024, 32, 13, 4, 5, 6, 7);
    info.frameNumber = ~u64{0} - 1;
    info.preset = 255;
    info.extra.Add(L"Gain", L"12", L"Counter", L"int");
    info.extra.SetClass(L"Gain", L"group");
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"tIME", "Time 032:13:04:05.006007 IRIG ascii 1 "},
        {L"framenumber", "FrameNumber 18446744073709551614 counter int 1 "},
        {L"PRESET", "Preset -1 counter int 1 "},
        {L"Gain", "Gain 12 Counter int 1 "}};
    EXPECT_EQ(info.NumEntries(), 4u);
    for (u32 i = 0; i < 4; ++i)
        EXPECT_EQ(Row(info.GetAt(i)) + Row(info.Get(rows[i].first)), std::string(rows[i].second) + rows[i].second);
    for (const u32 none : {4u, 0xFFFFFFFFu}) EXPECT_EQ(Row(info.GetAt(none)), "    0 ");
    EXPECT_EQ(Row(info.Get(L"gAIN")), "gAIN 12 Counter int 1 ");  // the name asked for
    EXPECT_EQ(Row(info.Get(L"Other")), "Other    0 ");
    EXPECT_EQ(Text(info.GetValueAt(3), info.GetNameAt(3), info.GetUnit(L"gain"), info.GetTypeAt(1)),
              "12 Gain Counter int ");
}

TEST(FrameInfo, SetValueWritesThrough) {
    CFrameInfoReduceObject info;
    const int year = info.time.GetYear();
    info.SetValue(L"TIME", L"032:13:04:05.006007");
    info.SetValue(L"frameNUMBER", L"18446744073709551614");
    info.SetValue(L"preset", L"-1");
    EXPECT_EQ(Text(info.GetValueAt(0), info.frameNumber, info.preset, info.NumEntries()),
              "032:13:04:05.006007 18446744073709551614 255 3 ");
    EXPECT_NEAR(info.time.GetYear(), year, 1);
    info.extra.Add(L"Gain", L"1", L"Counter", L"int");
    info.SetValue(L"GAIN", L"2");
    EXPECT_EQ(Row(info.GetAt(3)), "Gain 2  int 1 ");  // a set clears the unit
}

TEST(FrameInfo, DefaultKeepsThePlaceAndDuplicateTakesTheEntries) {
    CFrameInfoReduceObject info;
    info.valid = info.frameFilled = false;
    info.frameNumber = 7;
    info.preset = 2;
    info.time.SetTimestamp(0);
    info.extra.Add(L"a", L"1", L"", nullptr);
    const auto copy = info.Duplicate().Cast<CFrameInfoReduceObject>();
    info.Default();
    EXPECT_EQ(Text(info.valid, info.frameFilled, info.frameNumber, info.preset, info.NumEntries()), "1 1 7 2 3 ");
    EXPECT_NE(info.time.GetTimestamp(), 0);
    EXPECT_EQ(Text(copy->valid, copy->frameFilled, copy->time.GetTimestamp(), copy->GetValue(L"a")), "0 0 0 1 ");
}

TEST(FrameInfoExtra, AddingFindsByNameOrAppendsButForReservedNames) {
    CFrameInfoExtra extra;
    for (const wchar_t* name : {L"Time", L"tIMe", L"FRAMENUMBER", L"preset"}) {
        extra.Add(name, L"1", L"2", L"3");
        extra.AddPlaceholder(name, L"2", L"3");
        extra.SetUnit(name, L"2");
        extra[name] = L"1";
        EXPECT_TRUE(!extra[name].Exists() && extra.nValues() == 0);
    }
    extra.AddPlaceholder(L"b", L"u", L"int");
    extra.Add(L"a", L"1", L"v", nullptr);
    extra.Add(L"B", L"2", L"w", nullptr);       // keeps name and type
    extra.AddPlaceholder(L"b", L"x", nullptr);  // keeps the value
    extra.SetType(L"Preset2", L"float");
    ASSERT_EQ(extra.nValues(), 3u);
    EXPECT_EQ(
        Text(extra.GetAt(0).name, extra.GetValue(L"b"), extra.GetUnit(L"b"), extra.GetType(L"b"), extra.GetClass(L"b"),
             extra.FindValue(L"PRESET2"), extra.GetValue(L"Preset2"), extra.GetType(L"none")),
        "b 2 x int  2   ");
    extra.Remove(L"none");
    extra.Remove(L"A");
    EXPECT_TRUE(extra.FindValue(L"Preset2") == 1 && extra.FindValue(L"a") == -1);
    const u32 capacity = extra.GetCapacity();
    extra.Clear();
    EXPECT_TRUE(extra.nValues() == 0 && extra.GetCapacity() == capacity);
}

TEST(FrameInfoExtra, HandlesReadAndWrite) {
    CFrameInfoExtra extra;
    extra.Add(L"n", L"-12.75", L"unit", L"float");
    CFrameInfoExtra::CEntry entry = extra[0];
    EXPECT_EQ(Text(entry.Exists(), static_cast<int>(entry), static_cast<double>(entry), static_cast<i64>(entry),
                   static_cast<const wchar_t*>(entry)),
              "1 -12 -12.75 -12 -12.75 ");
    EXPECT_STREQ(entry.setValue(L"3"), L"3");
    EXPECT_EQ(Text(entry.getUnit(), entry.getType()), " float ");  // the unit is cleared
    EXPECT_EQ(Text(entry.setUnit(L"K"), entry.setType(L"t"), entry.setClass(L"c")), "K t c ");
    EXPECT_EQ(Text(extra.GetUnit(L"n"), entry.getType(), entry.getClass()), "K t c ");
    const auto put = [&](auto value) { return (extra[L"i"] = value, Text(extra[L"I"].getValue())); };
    EXPECT_EQ(put(-5), "-5 ");
    EXPECT_EQ(put(i64{-9'000'000'000}), "-9000000000 ");
    EXPECT_EQ(put(0.5), "0.500000 ");

    const CString unnamed = extra[0u];  // of the first entry, by an index of any type
    CString named(extra[L"N"]);
    EXPECT_TRUE(unnamed == L"3" && named == extra[0]);
    named = extra[L"i"];
    EXPECT_STREQ(named, L"0.500000");
    for (const int index : {-1, 2})
        EXPECT_EQ(Text(extra[index].Exists(), extra[index].getValue(), static_cast<int>(extra[index])), "0  0 ");
}

TEST(FrameHeader, DuplicateOwnsItsBytesAndDefaultKeepsTheCapacity) {
    CFrameHeaderReduceObject header;
    header.headerType = frame_types::kF7M0;
    header.headerData = {1, 2, 3};
    const auto copy = header.Duplicate().Cast<CFrameHeaderReduceObject>();
    const u32 capacity = header.headerData.GetCapacity();
    header.Default();
    EXPECT_TRUE(header.headerType == CGUID::Empty && header.headerData.size() == 0 &&
                header.headerData.GetCapacity() == capacity);
    EXPECT_TRUE(copy->headerType == frame_types::kF7M0 && copy->headerData.size() == 3 &&
                copy->headerData.GetAt(2) == 3);
}

TEST(SourceInfo, TextsAreCutToTheirFields) {
    CSourceInfoReduceObject info, read;
    info.cameraName = std::wstring(70, L'x').c_str();
    info.text1 = std::wstring(16, L'y').c_str();
    info.baseUnit = static_cast<EUnit>(0x102);  // only the low byte has room
    info.gps.status = 4;
    CByteWriter saved;
    saved.bytes = SavedBytes(info);
    ASSERT_TRUE(read.Load(FileOf(saved), 0x20000, 0));
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
    EXPECT_TRUE(info.frameRect == (RECT{1, 2, 3, -4}) && info.frameRectSet && info.pixelType == frame_types::kF7M0);
    EXPECT_EQ(Text(info.cameraName, info.sourceBits, info.sourceKind, info.presetCount, info.presets[0].enabled,
                   info.presets[1].enabled, info.presets[7].scale, info.text4, info.gps.isValid()),
              "Unknown Camera 16 3 4 1 0 1  0 ");
    EXPECT_GT(info.time.GetTimestamp(), 130'000'000'000'000'000);
}

TEST(SourceInfo, CountsAndPacketingArePatchedInPlace) {
    const u32 counts[9] = {5, 0, 0x01020304, 0, 0, 0, 0, 0, 9};
    const auto update = CSourceInfoReduceObject::UpdateNumFrames;
    const auto pack = CSourceInfoReduceObject::UpdatePacketing;
    for (const bool fixed : {false, true}) {
        std::vector<u8> record(2049, 0xEE), expected;
        record[78] = fixed;
        expected = record;
        EXPECT_FALSE(update(nullptr, 2048, counts, 3) || update(record.data(), 2047, counts, 3) ||
                     update(record.data(), 2048, counts, 9) || pack(record.data(), 2047, 1, 2, 3) ||
                     pack(nullptr, 2048, 1, 2, 3));
        EXPECT_TRUE(update(record.data(), 2048, nullptr, 0));
        EXPECT_EQ(record, expected);
        for (u32 i = 0; i < 3; ++i) {
            u8* preset = expected.data() + 1024 + 128 * i;
            if (!fixed) preset[0] = counts[i] > 0;
            for (int byte = 0; byte < 4; ++byte) preset[15 + byte] = static_cast<u8>(counts[i] >> (8 * byte));
        }
        for (u8 i = 0; i < 6; ++i) expected[127 + (i ^ 1u)] = i + 1;
        EXPECT_TRUE(update(record.data(), 2048, counts, 3) && pack(record.data(), 2048, 0x0102, 0x0304, 0x0506));
        EXPECT_EQ(record, expected);
    }
}

TEST(GPSData, InvalidRecordAndItsSwap) {
    CByteWriter expected;
    expected.U32(0).Zeros(12).F64(-1).F64(-1).F32(-1).U32(0).Zeros(24).F32(-1).Zeros(6).U16(0).F32(-1).F32(-1).F32(-1);
    expected.Text("WGS84", 28).U32(0).F64(-1).F64(-1).F32(-1).F32(-1).Zeros(32).U16(0).U16(53).U32(0);
    ASSERT_EQ(expected.bytes.size(), 184u);
    SGPSData gps;
    std::memset(static_cast<void*>(&gps), 0xAA, sizeof gps);
    gps.invalidate();
    EXPECT_EQ(std::memcmp(&gps, expected.bytes.data(), sizeof gps), 0);
    EXPECT_FALSE(gps.isValid() || gps.isSwapped());
    gps.status = 1;
    EXPECT_TRUE(gps.isValid());
    gps.swap();
    EXPECT_TRUE(gps.isSwapped());

    u8 bytes[184];
    for (u8 i = 0; i < 184; ++i) bytes[i] = i;
    std::memcpy(static_cast<void*>(&gps), bytes, sizeof gps);
    gps.swap();
    // offset and width of each field that turns
    const int fields[][2] = {{0, 4},  {16, 8},  {24, 8},  {32, 4},  {36, 4},  {64, 4},  {74, 2},  {76, 4},  {80, 4},
                             {84, 4}, {116, 4}, {120, 8}, {128, 8}, {136, 4}, {140, 4}, {176, 2}, {178, 2}, {180, 4}};
    for (const auto& [offset, width] : fields) std::reverse(bytes + offset, bytes + offset + width);
    EXPECT_EQ(std::memcmp(&gps, bytes, sizeof gps), 0);
}

using CParameters = CObjectParametersReduceObject;

TEST(ObjectParameters, DefaultsAreThoseOfTheStoredBits) {
    CParameters object;
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

TEST(ObjectParameters, EqualsLooksAtWhatGoesIntoAModelAndCopiesTakeAllButTheVersion) {
    const CParameters a;
    CParameters b, copy;
    b.fromSource = true, b.estimatedAtmosphereTrans = 0.5f, b.parameterMask = 9, b.preset = 3, b.version = 1;
    b.valid = false;
    EXPECT_TRUE(a.Equals(&b));
    b.CopyTo(&copy);
    EXPECT_EQ(Text(copy.valid, copy.preset, copy.parameterMask, copy.version), Text(0, 3, 9, 0x10001));
    for (const auto field : {&CParameters::emissivity, &CParameters::distance, &CParameters::reflectedTemp,
                             &CParameters::atmosphereTemp, &CParameters::extOpticsTemp, &CParameters::extOpticsTrans,
                             &CParameters::atmosphereTrans, &CParameters::relativeHumidity}) {
        CParameters c;
        c.*field += 1e-4f;
        EXPECT_FALSE(a.Equals(&c) || c.Equals(&a));
    }
    for (const float close : {1.0f - 1e-6f, NAN}) EXPECT_FALSE((b.emissivity = close, a.Equals(&b)));
}

}  // namespace
}  // namespace ovix::reduce
