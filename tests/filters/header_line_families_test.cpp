#include "reduce/filters/osprey_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/pixel_types.h"
#include "reduce/filters/header_line_filter.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/frame_reader.h"
#include "support/header_line_frames.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// Of a header alone.
SFrameReader Parsed(const wchar_t* filter, GUID type, const Bytes& header = LORHeader()) {
    SFrameReader reader(filter, type, 60, 0);
    EXPECT_TRUE(reader.ParseMetadata(header));
    return reader;
}
std::string ValueOf(SFrameReader reader, const wchar_t* name) { return reader.Info()->GetValue(name).GetUTF8(); }

TEST(LORFilter, YearOfTheCallerAndHoursInTwoPlaces) {
    Bytes header = LORHeader();
    Patch(header, 2, 366 << 2 | 1, 2);  // two bits for 16 hours and more
    Patch(header, 4, 7 << 12 | 59 << 6 | 58, 2);
    CDateTime time, expected;
    time.SetYYDHMS(2000, 1, 0, 0, 0, 0, 0);
    ASSERT_TRUE(filterFactory()->Create(L"LOR-RA")->ParseTime(header.data(), kLORRA, 640, 512, 120, time));
    expected.SetYYDHMS(2000, 366, 23, 59, 58, 789, 12);
    EXPECT_EQ(time, expected);
}

TEST(LORFilter, SomeDetectorsShowDegrees) {
    for (const auto& [type, subType, shown] :
         {std::tuple{3, 4, "-196.15"}, {3, 5, "-196.15"}, {3, 3, "77.00"}, {3, 6, "77.00"}, {2, 4, "77.00"}}) {
        Bytes header = LORHeader();
        header[60] = static_cast<u8>(type);
        header[61] = static_cast<u8>(subType);
        EXPECT_EQ(ValueOf(Parsed(L"LOR-RA", kLORRA, header), L"FPATemp"), "77.00");
        EXPECT_EQ(ValueOf(Parsed(L"LOR-SB", kLORSB, header), L"FPATemp"), shown) << type << ' ' << subType;
    }
}

TEST(LORFilter, LensBlockByItsLowestThreeBits) {
    Bytes header = LORHeader();
    for (const int state : {1, 9, 0x81, 0xFF01, 0, 2, 3, 5}) {
        const bool there = (state & 7) == 1;
        Patch(header, 96, static_cast<u64>(state), 2);
        SFrameReader sb = Parsed(L"LOR-SB", kLORSBHeader, header);
        const auto view = sb.objects.GetFOV(false);
        ASSERT_TRUE(ValueOf(sb, L"IHFOV").empty() != there && static_cast<bool>(view) == there) << state;
        EXPECT_TRUE(!there || (view->valid && view->IVFOV == view->IHFOV && std::abs(view->IHFOV - 280) < 1e-4));
    }
    Patch(header, 96, 1, 6);  // no focal length
    SFrameReader sb = Parsed(L"LOR-SB", kLORSB, header);
    EXPECT_TRUE(ValueOf(sb, L"IVFOV") == "inf" && std::isinf(sb.objects.GetFOV(false)->IHFOV));
    EXPECT_FALSE(Parsed(L"LOR-RA", kLORRA).objects.GetFOV(false));
}

TEST(LORFilter, SourceFixesThePresetOfOneKindOfHeader) {
    SFrameReader reader(L"LOR-SB", kLORSBHeader, 60, 0);
    const auto presetOf = [&](GUID type) {
        reader.type = type;
        return reader.ParseMetadata(LORHeader()) ? reader.preset : 99;
    };
    const auto source = reader.objects.GetSourceInfo(true);
    EXPECT_EQ(presetOf(kLORSBHeader), 2);
    source->fixedPreset = true;
    for (const auto& [type, preset] : {std::pair{kLORSB, 2}, {rootIRType, 2}, {kLORSBHeader, 0}})
        EXPECT_EQ(presetOf(type), preset);
    EXPECT_TRUE(reader.Info()->preset == 0 && ValueOf(reader, L"ActivePreset") == "2");  // the latter is the header's
    SFrameReader ra(L"LOR-RA", kLORRAHeader, 60, 0);
    ra.objects.GetSourceInfo(true)->fixedPreset = true;
    EXPECT_TRUE(ra.ParseMetadata(LORHeader()) && ra.preset == 2);
}

TEST(LORFilter, Triggers) {
    for (const auto& [name, type, fields] : {std::tuple{L"LOR-RA", kLORRA, 1u}, {L"LOR-SB", kLORSB, 2u}}) {
        const SFrameReader reader(name, type, 640, 512);
        TArray<CString> names{L"left over"};
        EXPECT_TRUE(reader.filter->GetTriggerFields(CGUID::Empty, names));
        ASSERT_EQ(names.size(), fields);
        EXPECT_TRUE(names[0] == L"Trigger" && (fields == 1 || names[1] == L"RecordStart"));
        Bytes header = LORHeader();
        header.resize(96);
        for (const u32 inputs : {0x0000u, 0x4000u, 0x8000u, 0xC000u}) {
            Patch(header, 10, inputs, 2);
            for (u8 field = 0; field < fields; ++field)
                EXPECT_EQ(reader.Trigger(header, 1, field), (inputs & 0x8000u >> field) ? 0 : -1) << inputs;
            EXPECT_EQ(reader.Trigger(header, 1, static_cast<u8>(fields)), std::nullopt);
        }
        EXPECT_EQ(reader.Trigger({header.begin(), header.end() - 1}, 1, 0), std::nullopt);
        EXPECT_EQ(SFrameReader(name, kOsprey, 640, 512).Trigger(header, 1, 0), std::nullopt);
    }
}

TEST(OspreyFilter, ObjectsOfItsOwn) {
    for (const u16 width : {u16{95}, u16{96}}) {
        Bytes line = OspreyHeader(width);
        CReduceObjectArray objects;
        u8 preset = 9;
        for (const EDataType refused : {Flt32, Int16, Opaque})
            EXPECT_FALSE(COspreyFilter().ParseFrame(line.data(), kOspreyHeader, width, 1, 192, {nullptr, refused},
                                                    objects, preset));
        EXPECT_EQ(objects.GetSize(), 0u);
        ASSERT_TRUE(COspreyFilter().ParseReduceObjects(line.data(), kOspreyHeader, width, 1, 192, objects, preset));
        ASSERT_EQ(objects.GetSize(), 3u);
        EXPECT_EQ(objects.GetAt(1)->GetTypeID(), CFrameInfoReduceObject::typeID);
        const auto tern = objects.GetAt(0).Cast<CTernFactoryCalReduceObject>();
        EXPECT_TRUE(tern->frontPanelTemp == 300.493744f && tern->airGapTemp == 223.149994f &&
                    tern->dewarTemp == 463.150024f && tern->preset == 2 && !tern->valid);
        const auto raw = objects.GetAt(2).Cast<COspreyFrameInfoReduceObject>();
        EXPECT_EQ(Text(raw->valid, raw->persist, raw->preset, raw->frameNumber, raw->headerWords,
                       std::memcmp(raw->header, line.data(), 192)),
                  Text(1, 0, 2, 4660, width, 0));
    }
}

TEST(OspreyFilter, OnlyBitsAreMasked) {
    Bytes line = OspreyHeader(100);
    for (std::size_t i = 1; i < line.size(); i += 2) line[i] = 0x01;
    COspreyFilter::SHeader header;
    ASSERT_TRUE(COspreyFilter::ParseHeader(header, line.data(), 100));
    EXPECT_EQ(header.integrationTime, 0x0101614Bu);  // 0x100, 0x100, 0x161, 0x14B, each a byte on from the one before
    EXPECT_EQ(header.frameCounter, 0x11334u);        // 0x112, 0x134
    EXPECT_EQ(header.saturation, 0xB1334u);          // the four bits of 0x1FA, then 0x112, 0x134
    EXPECT_EQ(Text(header.preset, header.saturationFlag, header.day, header.milliseconds, header.microseconds),
              "2 128 123 789 12 ");
    EXPECT_FLOAT_EQ(header.airGapTemp, (256 * 2.4f / 1024 - 0.5f) * 100);  // 0x100, and no bit of 0x1F0
}

TEST(OspreyFilter, TimesOutOfRange) {
    Bytes line = OspreyHeader(100), good = line;
    const auto expect = [&](int day, int hours) {
        CDateTime time, expected;  // in the present year, from which long days lead away
        expected.SetYDHMS(day, hours, 25, 36, 789, 12);
        EXPECT_TRUE(COspreyFilter().ParseTime(line.data(), kOsprey, 100, 0, 200, time));
        EXPECT_EQ(time, expected) << day;
    };
    const std::tuple<int, int, int> days[] = {{0x03, 0x66, 366}, {0x12, 0x33, 999}, {0x12, 0x34, 1},
                                              {0x16, 0x00, 367}, {0x20, 0x00, 767}, {0x99, 0x99, 999},
                                              {0xFF, 0xFF, 999}, {0x00, 0x0F, 15}};
    for (const auto& [high, low, day] : days) {
        PutLow(line, 75, {low, high});
        expect(day, 14);
    }
    // 110 hours: the light operations count them through, the frame info keeps the time of the frame before.
    PutLow(line, 74, {0xAA, 0x01, 0x00});
    expect(1, 110);
    CReduceObjectArray objects;
    u8 preset = 0;
    for (Bytes* each : {&good, &line})
        COspreyFilter().ParseReduceObjects(each->data(), kOspreyHeader, 100, 9, 192, objects, preset);
    EXPECT_STREQ(objects.GetFrameInfo(2, false)->time.Format(L"%j:%(irig)").GetUTF8(), "123:14:25:36.789012");
}

TEST(OspreyFilter, EncodedHeaderByteByByte) {
    COspreyFilter::SHeader header;
    header.preset = 16, header.integrationTime = 0x01020304, header.frameCounter = 0x54321;
    header.saturationFlag = 1, header.saturation = 0x0A1234, header.resolution = 0x0F0E;
    header.fpaControlWord = 0x8042A107, header.fpaWindowWord = 0x02800200;
    header.day = 366, header.hours = 23, header.minutes = 59, header.seconds = 58;
    header.milliseconds = 987, header.microseconds = 654;
    header.airGapTemp = 31, header.dewarTemp = -50, header.frontPanelTemp = 27.5f;
    for (const u16 width : {u16{95}, u16{96}}) {
        Bytes line(192, 0xE0), expected = line, clean(192);
        ASSERT_TRUE(COspreyFilter::EncodeHeader(header, line.data(), width));
        PutLow(expected, 1, {0x10, 1, 2, 3, 4, 0x80, 0x42, 0xA1, 0x07, 2, 0x80, 2, 0});
        PutLow(expected, 18, {0x43, 0x21});
        Patch(expected, 40, 0xEF0E, 2);
        PutLow(expected, 21, {0x8A, 0x12, 0x34});
        const std::size_t block = width == 95 ? 24 : 69;
        const u16 clock[] = {0x54, 0x76, 0x98, 0x58, 0x59, 0x23, 0x66, 0x03};
        for (std::size_t i = 0; i < 8; ++i) Patch(expected, 2 * (block + i), clock[i], 2);
        PutLow(expected, block + 8, {0, 0, 0, 0xC0, 0x0D});
        PutLow(expected, block + 19, {0x4A, 0x01, 0x59, 0x01, 0, 0});
        EXPECT_EQ(line, expected) << width;

        COspreyFilter::SHeader read;
        COspreyFilter::EncodeHeader(header, clean.data(), width);
        COspreyFilter::ParseHeader(read, clean.data(), width);
        EXPECT_EQ(read.preset, 1);  // goes out unshifted
    }
}

TEST(OspreyFrameInfo, DuplicateTakesWordsForBytes) {
    COspreyFrameInfoReduceObject object;
    for (u16 i = 0; i < 96; ++i) object.header[i] = static_cast<u16>(0x101 * (i + 1));
    for (const u16 words : {u16{0}, u16{50}, u16{96}, u16{500}}) {
        object.headerWords = words;
        const auto copy = object.Duplicate().Cast<COspreyFrameInfoReduceObject>();
        EXPECT_EQ(copy->headerWords, words);
        for (int i = 0; i < 96; ++i) EXPECT_EQ(copy->header[i], i < std::min<int>(words, 96) / 2 ? 0x101 * (i + 1) : 0);
    }
    const COspreyFrameInfoReduceObject assigned = object;
    EXPECT_EQ(assigned.header[95], 0x101 * 96);
    object.Default();
    EXPECT_EQ(object.header[0] + object.headerWords, 0);
}

TEST(MVFalconFilter, PresetAndDayWithoutTheirLimits) {
    const auto filter = filterFactory()->Create(L"MVFalcon");
    const std::tuple<int, int, int> cases[] = {
        {0x03, 0x65, 365}, {0x12, 0x33, 1233}, {0x12, 0x34, 1}, {0x20, 0x00, 767}};
    for (const auto& [high, low, day] : cases) {
        Bytes header = MVFalconHeader(130);
        PutLow(header, 30, {low, high});
        u8 preset = 0;
        u64 counter = 0;
        CDateTime time, expected;
        ASSERT_TRUE(filter->ParseBasicInfo(header.data(), kMVFalconHeader, 130, 9, 256, preset, counter, time));
        EXPECT_EQ(preset, 6);  // the whole byte, of which `ParseFrame` takes two bits
        expected.SetYDHMS(day, 14, 25, 36, 789, 12);
        EXPECT_EQ(time, expected);
        CReduceObjectArray objects;
        ASSERT_TRUE(filter->ParseReduceObjects(header.data(), kMVFalconHeader, 130, 9, 256, objects, preset));
        EXPECT_EQ(preset, 2);
        EXPECT_EQ(objects.GetFrameInfo(2, false)->time, expected);
    }
}

// The values of the families' headers, each with its kind, in their order; some belong to one model alone.
constexpr char kOspreyValues[] =
    "OS_ActivePreset=2/Counter OS_IntegrationTime=2.000000/Float OS_FrameCounter=4660/Counter "
    "OS_SaturationFlag=T/flag OS_Saturation=660020/Integer OS_FPAControlWord=0x8042A107/Integer "
    "OS_FPAWindowWord=0x02800200/Integer OS_Resolution=270/Integer OS_FrontPannelTemp=27.343756/Float "
    "OS_AirGapTemp=-50.000000/Float OS_DewarTemp=190.000015/Float";  // the last as single precision has it
constexpr char kLORValues[] =
    "ActivePreset=2/Counter FrameCounter=4026531841/Counter HeaderID=4660/Integer IRIGLocked=T/Flag Trigger=T/Flag "
    "SB:RecordStart=F/Flag VideoNUCOn=T/Flag GigENucOn=F/Flag CameraLinkNUCOn=T/Flag FlagInFOV=F/Flag "
    "RA:ChassisTemp=20.00/Float SB:FrontPanelTemp=20.00/Float SB:AirGapTemp=26.85/Float SB:InternalTemp=-5.00/Float "
    "FPATemp=77.00/Float IntegrationTime=2.000160/Float FilterID=3/Integer FPAControlWord=0x01020304A5060708090A/Text "
    "SaturationThreshold=65535/Integer SaturatedPixels=70000/Integer SaturationFlag=T/Flag FrameRate=50.00/Float "
    "DigitalGain=1.500/Float DigitalOffset=-0.5/Float DetectorType=7/Integer AnalogOffset=1.250/Float "
    "MainBoardTemp=39.19/Float PowerBoardTemp=0.00/Float DigitizerBoardTemp=20.00/Float RA:LensTemp=-5.00/Float "
    "SB:NUCFlagTemp=-5.00/Float AnalogIn_1=0.500/Float AnalogIn_2=1.001/Float AnalogIn_3=65.535/Float "
    "LockinPhase=4000000000/Integer LockinPeriod=5/Integer LockinValue=600/Integer DigitalIn=0x0A/Bitfield "
    "DigitalOut=0xB0/Bitfield ADResolution=14/Integer ROICType=8/Integer CameraType=9/Integer "
    "CameraSubType=10/Integer CameraSN=1042/Integer LensID=50/Integer SB:LensFocalLength=50.00/Float "
    "SB:LensFOVEncoderPos=16/Integer SB:LensFocusEncoderPos=-16/Integer SB:LensAnalogTemp=28.50/Float "
    "SB:LensBoardTemp=0.00/Float SB:LensExtTemp1=27.10/Float SB:LensExtTemp2=6553.50/Float SB:LensExtTemp3=0.10/Float "
    "SB:IHFOV=280.000/Float SB:IVFOV=280.000/Float";
constexpr char kMVFalconValues[] =
    "MV9100_ActivePreset=2/Counter MV9100_IntegrationTime=47721858750.000000/Float "
    "MV9100_FPAControlWord=0x0102030405A60708090A/Text MV9100_FrameCounter=15728641/Counter "
    "MV9100_SaturationThreshold=4660/Integer MV9100_SaturationPixelThreshold=-2/Integer "
    "MV9100_SaturatedPixels=65538/Integer MV9100_SaturationFlag=F/Flag MV9100_IRIGLocked=T/Flag "
    "MV9100_HumiditySensor=40/Integer MV9100_PressureSensor=101/Integer MV9100_TempSensor=-0.12/Float "
    "MV9100_FrontPanelTemp=0.09/Float MV9100_AirGapTemp=28.71/Float MV9100_DewarTemp=31.09/Float "
    "MV9100_DigitalGain=1.500/Float MV9100_DigitalOffset=-0.5/Float MV9100_ADResolution=14/Integer "
    "MV9100_AnalogOffset=1.163004/Float MV9100_AnalogIn1=2.00/Float MV9100_AnalogIn2=2.44/Float "
    "MV9100_AnalogIn3=1.19/Float MV9100_DigitalIn=0A/Bitfield MV9100_DigitalOut=B0/Bitfield "
    "MV9100_FrameRate=50.00/Float MV9100_DetectorType=1/Integer MV9100_ROICType=2/Integer MV9100_CameraType=3/Integer "
    "MV9100_CameraSN=1042/Integer MV9100_LensID=50/Integer";

struct SFamily {
    const wchar_t *filter, *ownName;
    GUID frameType, headerType;
    u32 headerWords, bytesRead;
    u64 counter, counterMax;
    Bytes (*header)(u16 width);
    const char* values;
    const char* ofOtherModel = "none";
};
const SFamily kFamilies[] = {
    {L"Osprey", L"MV7100", kOsprey, kOspreyHeader, 96, 192, 4660, 0xFFFF, OspreyHeader, kOspreyValues},
    {L"LOR-RA", L"LOR-RA", kLORRA, kLORRAHeader, 48, 96, 0xF0000001, 0xFFFFFFFF, LORHeader, kLORValues, "SB:"},
    {L"LOR-SB", L"LOR-SB", kLORSB, kLORSBHeader, 48, 120, 0xF0000001, 0xFFFFFFFF, LORHeader, kLORValues, "RA:"},
    {L"MVFalcon", L"MVFalcon", kMVFalcon, kMVFalconHeader, 128, 256, 0xF00001, 0xFFFFFF, MVFalconHeader,
     kMVFalconValues}};

std::string ValuesOf(const SFamily& family) {
    std::istringstream all(family.values);
    std::string values;
    for (std::string value; all >> value;) {
        if (value.starts_with(family.ofOtherModel)) continue;
        values += value.substr(value.find(':') == 2 ? 3 : 0) + ' ';
    }
    return values;
}

/// The format that goes with a kind.
std::string FormatOf(const std::string& kind) {
    return kind == "Float" ? "float" : kind == "Flag" || kind == "flag" || kind == "Text" ? "ascii" : "int";
}

TEST(HeaderLineFilter, FramesByteByByte) {
    for (const SFamily& family : kFamilies) {
        for (const u16 width : {u16{130}, u16{95}, u16{64}}) {
            if (width < family.bytesRead / 2 && family.filter != kFamilies[0].filter) continue;
            SCOPED_TRACE(CString::FromFormat(L"%s %d", family.filter, int{width}).GetUTF8());
            const std::vector<u16> image = Ramp(2 * width);
            const Bytes frame = HeaderLineFrame(family.header(width), width, image);
            SFrameReader reader(family.filter, family.frameType, width, 2);
            ASSERT_TRUE(reader.Parse(frame));
            EXPECT_EQ(reader.pixels, image);
            const auto info = reader.Info();
            EXPECT_EQ(Text(reader.preset, info->preset, info->frameNumber, info->time.Format(L"%Y %j:%(irig)")),
                      Text(2, 2, family.counter, CDateTime().GetYear(), "123:14:25:36.789012"));
            const auto light = reader.Light(frame);
            EXPECT_TRUE(light.hasAll && light.counterOfAll == family.counter && light.timeOfAll == info->time);

            // The description tells each value at its place, and the time.
            TArray<SFrameField> fields;
            ASSERT_TRUE(DescribeFrame(family.filter, frame.data(), family.frameType, width, 2,
                                      SFrameReader::Size(frame), fields));
            std::string values;
            for (const auto& entry : info->extra) {
                const auto same = [&](const SFrameField& f) { return f.name == entry.name; };
                const auto field = std::find_if(fields.begin(), fields.end(), same);
                ASSERT_NE(field, fields.end()) << entry.name.GetUTF8();
                EXPECT_TRUE(std::string(field->value.GetUTF8()).starts_with(entry.value.GetUTF8()));
                EXPECT_EQ(entry.type.GetUTF8(), FormatOf(entry.unit.GetUTF8())) << entry.name.GetUTF8();
                values += (entry.name + L"=" + entry.value + L"/" + entry.unit + L" ").GetUTF8();
            }
            EXPECT_EQ(values, ValuesOf(family));
            EXPECT_STREQ(fields[fields[0].name == L"Time" ? 0 : 8].value.GetUTF8(), "123:14:25:36.789012");
        }
    }
}

TEST(HeaderLineFilter, HeaderKeptApart) {
    for (const SFamily& family : kFamilies) {
        SFrameReader reader(family.filter, family.headerType, 1, 130);
        for (const u16 width : std::initializer_list<u16>{20, 47, 48, 96, 127, 128, 200}) {
            const Bytes frame = HeaderLineFrame(family.header(width), width, Ramp(width));
            const CExact exact(frame);
            GUID headerType;
            u32 headerSize = 0;
            ASSERT_TRUE(reader.filter->GetHeaderInfo(family.frameType, width, 1, SFrameReader::Size(frame), headerType,
                                                     headerSize));
            EXPECT_TRUE(headerType == family.headerType && headerSize == 2 * std::min<u32>(width, family.headerWords));
            for (const u32 size : {0u, 7u, headerSize, headerSize + 30}) {
                const CExact dest(Bytes(size, 0xCC));
                ASSERT_TRUE(reader.filter->ExtractHeader(exact.get(), family.frameType, width, 1,
                                                         SFrameReader::Size(frame), dest.get(), size));
                Bytes expected(frame.begin(), frame.begin() + std::min(size, headerSize));
                expected.resize(size);
                EXPECT_EQ(Bytes(dest.get(), dest.get() + size), expected) << width;
            }
        }
        GUID none;
        u32 size = 0;
        for (const GUID& type : {family.headerType, rootIRType, kK410F7M0})
            EXPECT_FALSE(reader.filter->GetHeaderInfo(type, 130, 1, 520, none, size) ||
                         reader.filter->ExtractHeader(nullptr, type, 130, 1, 520, nullptr, 0));
        // A header may come alone or with its frame: pixels are copied when they are there.
        Bytes line = family.header(1);
        line.resize(std::max<std::size_t>(family.bytesRead, 2 * 131), 0xAB);
        ASSERT_TRUE(reader.Parse(line));
        EXPECT_EQ(Bytes(line.begin() + 2, line.begin() + 262), PixelBytes(reader.pixels));
        if (family.bytesRead >= 2 * 131) continue;
        reader.pixels.assign(130, 7);
        line.resize(2 * 131 - 1);
        ASSERT_TRUE(reader.Parse(line));
        EXPECT_EQ(reader.pixels, std::vector<u16>(130, 7));
    }
}

}  // namespace
}  // namespace ovix::reduce
