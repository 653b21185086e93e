#include "reduce/filters/lor_header.h"

namespace ovix::reduce::lor {

namespace {

using namespace frame_values;

// How the bytes of a field are read. What is scaled is scaled in single precision unless it says double.
template <Number T>
constexpr T Plain(const u8* bytes) {
    return LoadLittle<T>(bytes);
}
template <u32 kBit>
bool Bit(const u8* bytes) {
    return WordBits<kBit>(bytes) != 0;
}
float Hundredths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 100.0f; }
float Thousandths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 1000.0f; }
float Celsius(const u8* bytes) { return Hundredths(bytes) - 273.15f; }
float CelsiusFromDouble(const u8* bytes) { return static_cast<float>(static_cast<double>(Hundredths(bytes)) - 273.15); }
double IntegrationTime(const u8* bytes) { return LoadLittle<u32>(bytes) / 6250.0; }
double FrameRate(const u8* bytes) { return 1.0 / (LoadLittle<u32>(bytes) / 6.25e6); }
float DigitalGain(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 16383.0f; }
float DigitalOffset(const u8* bytes) { return static_cast<float>(LoadLittle<i16>(bytes)) * 0.5f; }
u32 SaturatedPixels(const u8* bytes) { return LoadLittle<u32>(bytes) & 0x7FFFFFFF; }
bool SaturationFlag(const u8* bytes) { return LoadLittle<u32>(bytes) >> 31 != 0; }

CString ControlWord(const u8* bytes, const wchar_t* format) {
    const auto word = [&](u32 i) { return Plain<u16>(bytes + 2 * i); };
    return CString::FromFormat(format, word(0), word(1), word(2), word(3), word(4));
}
CString Time(const u8* bytes, const wchar_t*) { return Clock(bytes - kTime).Text(); }

struct SField {
    u8 models;
    STableField field;
};
constexpr u8 kBoth = RA | SB | CelsiusSB;
constexpr u8 kAnySB = SB | CelsiusSB;
constexpr u8 kKelvin = RA | SB;

/// In the order in which the values are shown.
constexpr SField kFields[] = {
    // models, offset, size, name, kind, text, format, unit
    {kBoth, {kTime, 8, L"Time", kToldOnly, Time}},
    {kBoth, {kSwitches, 2, L"ActivePreset", kCounter, Shown<WordBits<0, 1>>, L"%u"}},
    {kBoth, {kFrameCounter, 4, L"FrameCounter", kCounter, Shown<Plain<u32>>, L"%u"}},
    {kBoth, {0, 2, L"HeaderID", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {kTime, 2, L"IRIGLocked", kFlag, ShownFlag<Bit<15>>}},
    {kBoth, {kSwitches, 2, L"Trigger", kFlag, ShownFlag<Bit<15>>}},
    {kAnySB, {kSwitches, 2, L"RecordStart", kFlag, ShownFlag<Bit<14>>}},
    {kBoth, {kSwitches, 2, L"VideoNUCOn", kFlag, ShownFlag<Bit<4>>}},
    {kBoth, {kSwitches, 2, L"GigENucOn", kFlag, ShownFlag<Bit<3>>}},
    {kBoth, {kSwitches, 2, L"CameraLinkNUCOn", kFlag, ShownFlag<Bit<2>>}},
    {kBoth, {kSwitches, 2, L"FlagInFOV", kFlag, ShownFlag<Bit<5>>}},
    {RA, {12, 2, L"ChassisTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kAnySB, {12, 2, L"FrontPanelTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kAnySB, {14, 2, L"AirGapTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kAnySB, {16, 2, L"InternalTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kKelvin, {18, 2, L"FPATemp", kFloat, Shown<Hundredths>, L"%0.2f", L"K"}},
    {CelsiusSB, {18, 2, L"FPATemp", kFloat, Shown<CelsiusFromDouble>, L"%0.2f", L"°C"}},
    {kBoth, {24, 4, L"IntegrationTime", kFloat, Shown<IntegrationTime>, L"%f", L"ms"}},
    {kBoth, {30, 2, L"FilterID", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {34, 10, L"FPAControlWord", kText, ControlWord, L"0x%04X%04X%04X%04X%04X"}},
    {kBoth, {44, 2, L"SaturationThreshold", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {46, 4, L"SaturatedPixels", kInteger, Shown<SaturatedPixels>, L"%u"}},
    {kBoth, {46, 4, L"SaturationFlag", kFlag, ShownFlag<SaturationFlag>}},
    {kBoth, {50, 4, L"FrameRate", kFloat, Shown<FrameRate>, L"%0.2f", L"Hz"}},
    {kBoth, {54, 2, L"DigitalGain", kFloat, Shown<DigitalGain>, L"%0.3f"}},
    {kBoth, {56, 2, L"DigitalOffset", kFloat, Shown<DigitalOffset>, L"%0.1f"}},
    {kBoth, {58, 1, L"DetectorType", kInteger, Shown<Plain<u8>>, L"%u"}},
    {kBoth, {62, 2, L"AnalogOffset", kFloat, Shown<Thousandths>, L"%0.3f"}},
    {kBoth, {64, 2, L"MainBoardTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kBoth, {66, 2, L"PowerBoardTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kBoth, {68, 2, L"DigitizerBoardTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {RA, {70, 2, L"LensTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kAnySB, {70, 2, L"NUCFlagTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"}},
    {kBoth, {72, 2, L"AnalogIn_1", kFloat, Shown<Thousandths>, L"%0.3f"}},
    {kBoth, {74, 2, L"AnalogIn_2", kFloat, Shown<Thousandths>, L"%0.3f"}},
    {kBoth, {76, 2, L"AnalogIn_3", kFloat, Shown<Thousandths>, L"%0.3f"}},
    {kBoth, {78, 4, L"LockinPhase", kInteger, Shown<Plain<u32>>, L"%u"}},
    {kBoth, {82, 4, L"LockinPeriod", kInteger, Shown<Plain<u32>>, L"%u"}},
    {kBoth, {86, 2, L"LockinValue", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {88, 1, L"DigitalIn", kBitfield, Shown<Plain<u8>>, L"0x%02X"}},
    {kBoth, {89, 1, L"DigitalOut", kBitfield, Shown<Plain<u8>>, L"0x%02X"}},
    {kBoth, {90, 2, L"ADResolution", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {59, 1, L"ROICType", kInteger, Shown<Plain<u8>>, L"%u"}},
    {kBoth, {kCameraType, 1, L"CameraType", kInteger, Shown<Plain<u8>>, L"%u"}},
    {kBoth, {kCameraSubType, 1, L"CameraSubType", kInteger, Shown<Plain<u8>>, L"%u"}},
    {kBoth, {92, 2, L"CameraSN", kInteger, Shown<Plain<u16>>, L"%u"}},
    {kBoth, {94, 2, L"LensID", kInteger, Shown<Plain<u16>>, L"%u"}},
};

float Tenths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 10.0f; }
float FocalLength(const u8* bytes) { return static_cast<float>(LoadLittle<u32>(bytes)) / 10.0f; }
/// The low 24 bits with their sign.
i32 Encoder(const u8* bytes) { return static_cast<i32>(LoadLittle<u32>(bytes) << 8) >> 8; }
double IFOV(const u8* bytes) { return static_cast<double>(14.0f / FocalLength(bytes)) * 1000.0; }

constexpr STableField kLensFields[] = {
    // offset, size, name, kind, text, format, unit
    {kLensState, 2, L"LensBlockState", kToldOnly, Shown<Plain<u16>>, L"0x%04X"},
    {kFocalLength, 4, L"LensFocalLength", kFloat, Shown<FocalLength>, L"%0.2f"},
    {102, 4, L"LensFOVEncoderPos", kInteger, Shown<Encoder>, L"%d"},
    {106, 4, L"LensFocusEncoderPos", kInteger, Shown<Encoder>, L"%d"},
    {110, 2, L"LensAnalogTemp", kFloat, Shown<Tenths>, L"%0.2f"},
    {112, 2, L"LensBoardTemp", kFloat, Shown<Tenths>, L"%0.2f"},
    {114, 2, L"LensExtTemp1", kFloat, Shown<Tenths>, L"%0.2f"},
    {116, 2, L"LensExtTemp2", kFloat, Shown<Tenths>, L"%0.2f"},
    {118, 2, L"LensExtTemp3", kFloat, Shown<Tenths>, L"%0.2f"},
    {kFocalLength, 4, L"IHFOV", kFloat, Shown<IFOV>, L"%0.3f"},
    {kFocalLength, 4, L"IVFOV", kFloat, Shown<IFOV>, L"%0.3f"},
};

}  // namespace

EModel ModelOfSB(const u8* header) {
    const u8 subType = header[kCameraSubType];
    return header[kCameraType] == 3 && (subType == 4 || subType == 5) ? CelsiusSB : SB;
}

SDayClock Clock(const u8* header) {
    const u8* time = header + kTime;
    const u32 microseconds = u32{LoadLittle<u16>(time + 4)} << 16 | LoadLittle<u16>(time + 6);
    return {.day = static_cast<int>(WordBits<2, 10>(time)),
            .hours = static_cast<int>(WordBits<0, 1>(time) << 4 | WordBits<12, 15>(time + 2)),
            .minutes = static_cast<int>(WordBits<6, 11>(time + 2)),
            .seconds = static_cast<int>(WordBits<0, 5>(time + 2)),
            .milliseconds = static_cast<int>(microseconds / 1000),
            .microseconds = static_cast<int>(microseconds % 1000)};
}

bool HasLensBlock(const u8* header) { return WordBits<0, 2>(header + kLensState) == 1; }
double LensIFOV(const u8* header) { return IFOV(header + kFocalLength); }

void AddValues(CFrameInfoExtra& extra, EModel model, const u8* header) {
    for (const SField& row : kFields) {
        if (row.models & model) AddField(extra, row.field, header);
    }
}

void AddLensValues(CFrameInfoExtra& extra, const u8* header) { AddFields(extra, kLensFields, header); }

void Describe(TArray<SFrameField>& fields, EModel model, const u8* header) {
    for (const SField& row : kFields) {
        if (row.models & model) DescribeField(fields, row.field, header);
    }
    if (model != RA && HasLensBlock(header)) DescribeFields(fields, kLensFields, header);
}

}  // namespace ovix::reduce::lor
