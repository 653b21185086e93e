#include "reduce/filters/header_line_filter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/pixel_types.h"
#include "support/frame_reader.h"
#include "support/header_line_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

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
     kMVFalconValues},
};

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
    if (kind == "Float") return "float";
    return kind == "Flag" || kind == "flag" || kind == "Text" ? "ascii" : "int";
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
            EXPECT_EQ(reader.preset, 2);
            const auto info = reader.Info();
            EXPECT_TRUE(info->preset == 2 && info->frameNumber == family.counter);
            EXPECT_EQ(info->time.GetYear(), CDateTime().GetYear());
            EXPECT_STREQ(info->time.Format(L"%j:%(irig)").GetUTF8(), "123:14:25:36.789012");
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
                values += CString::FromFormat(L"%s=%s/%s ", entry.name.c_str(), entry.value.c_str(), entry.unit.c_str())
                              .GetUTF8();
            }
            EXPECT_EQ(values, ValuesOf(family));
            EXPECT_STREQ(fields[fields[0].name == L"Time" ? 0 : 8].value.GetUTF8(), "123:14:25:36.789012");
        }
    }
}

TEST(HeaderLineFilter, LightOperationsTakeThreeTypes) {
    for (const SFamily& family : kFamilies) {
        SFrameReader reader(family.filter, family.frameType, 130, 1);
        const Bytes frame = HeaderLineFrame(family.header(130), 130, Ramp(130));
        for (const GUID& type : {family.frameType, family.headerType, rootIRType, kK410F7M0}) {
            reader.type = type;
            const bool parses = type != kK410F7M0, hasHeader = type == family.frameType;
            const auto light = reader.Light(frame);
            EXPECT_TRUE(light.hasPreset == parses && light.hasTime == parses && light.hasCounter == parses &&
                        light.hasAll == parses);
            GUID header;
            u32 size = 0;
            EXPECT_EQ(reader.filter->GetHeaderInfo(type, 130, 1, 520, header, size), hasHeader);
            EXPECT_EQ(reader.filter->ExtractHeader(nullptr, type, 130, 1, 520, nullptr, 0), hasHeader);
        }
    }
}

TEST(HeaderLineFilter, HeaderKeptApart) {
    for (const SFamily& family : kFamilies) {
        SFrameReader reader(family.filter, family.headerType, 1, 130);
        for (const auto width : std::initializer_list<u16>{20, 47, 48, 96, 127, 128, 200}) {
            const Bytes frame = HeaderLineFrame(family.header(width), width, Ramp(width));
            const auto exact = SFrameReader::Exact(frame);
            const u32 frameSize = SFrameReader::Size(frame);
            GUID headerType;
            u32 headerSize = 0;
            ASSERT_TRUE(reader.filter->GetHeaderInfo(family.frameType, width, 1, frameSize, headerType, headerSize));
            EXPECT_EQ(headerType, family.headerType);
            EXPECT_EQ(headerSize, 2 * std::min<u32>(width, family.headerWords));
            for (const u32 size : {0u, 7u, headerSize, headerSize + 30}) {
                const auto dest = SFrameReader::Exact(Bytes(size, 0xCC));
                ASSERT_TRUE(
                    reader.filter->ExtractHeader(exact.get(), family.frameType, width, 1, frameSize, dest.get(), size));
                for (u32 i = 0; i < size; ++i) {
                    ASSERT_EQ(dest[i], i < headerSize ? frame[i] : 0) << width << ' ' << i;
                }
            }
        }
        // A header may come alone or with its frame: pixels are copied when they are there.
        Bytes line = family.header(1);
        line.resize(std::max<std::size_t>(family.bytesRead, 2 * 131), 0xAB);
        ASSERT_TRUE(reader.Parse(line));
        EXPECT_EQ(Bytes(line.begin() + 2, line.begin() + 262), PixelBytes(reader.pixels));
        std::fill(reader.pixels.begin(), reader.pixels.end(), u16{7});
        if (family.bytesRead >= 2 * 131) continue;
        line.resize(2 * 131 - 1);
        ASSERT_TRUE(reader.Parse(line));
        EXPECT_EQ(reader.pixels, std::vector<u16>(130, 7));
    }
}

}  // namespace
}  // namespace ovix::reduce
