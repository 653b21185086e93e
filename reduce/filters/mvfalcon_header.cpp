#include "reduce/filters/mvfalcon_header.h"

namespace ovix::reduce::mvfalcon {

namespace {

using namespace frame_values;

// How the bytes of a field are read. What is scaled is scaled in single precision unless it says double.
constexpr double kTick = 156.25;  ///< nanoseconds
u32 PresetBits(const u8* bytes) { return *bytes & 3u; }
template <u32 kCount>
i32 Number(const u8* bytes) {
    return static_cast<i32>(Bytes<kCount>(bytes));
}
bool IsSet(const u8* bytes) { return *bytes != 0; }
u16 LittleWord(const u8* bytes) { return static_cast<u16>(bytes[0] | bytes[Word(1)] << 8); }
double IntegrationTime(const u8* bytes) { return Bytes<4>(bytes) * kTick; }
double FrameRate(const u8* bytes) { return 1e9 / (Bytes<4>(bytes) * kTick); }
float Hundredths(const u8* bytes) { return static_cast<float>(static_cast<i16>(LittleWord(bytes))) / 100.0f; }
float Volts(const u8* bytes) { return static_cast<float>(LittleWord(bytes)) / 1023.0f * 2.44f; }
float Celsius(const u8* bytes) { return (Volts(bytes) - 0.5f) * 100.0f; }
float DigitalGain(const u8* bytes) { return static_cast<float>(Bytes<2>(bytes)) * 6.1035156e-5f; }
float DigitalOffset(const u8* bytes) { return static_cast<float>(static_cast<i16>(Bytes<2>(bytes))) * 0.5f; }
float AnalogOffset(const u8* bytes) { return static_cast<float>(Bytes<2>(bytes)) / 4095.0f * 5.0f - 2.5f; }

CString ControlWord(const u8* bytes, const wchar_t* format) {
    const auto byte = [&](u32 i) { return bytes[Word(i)]; };
    return CString::FromFormat(format, byte(0), byte(1), byte(2), byte(3), byte(4), byte(5), byte(6), byte(7), byte(8),
                               byte(9));
}
CString Time(const u8* bytes, const wchar_t*) { return ClockOfDigits(bytes).Text(); }

/// In the order in which the values are shown. "%d" shows the upper half of 32 bits as negative numbers.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, format, unit
    {kClock, Word(8), L"Time", kToldOnly, Time},
    {kPreset, Word(1), L"MV9100_ActivePreset", kCounter, Shown<PresetBits>, L"%d"},
    {Word(2), Word(4), L"MV9100_IntegrationTime", kFloat, Shown<IntegrationTime>, L"%f", L"ns"},
    {Word(6), Word(10), L"MV9100_FPAControlWord", kText, ControlWord, L"0x%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X"},
    {kFrameCounter, Word(3), L"MV9100_FrameCounter", kCounter, Shown<Number<3>>, L"%d"},
    {Word(19), Word(2), L"MV9100_SaturationThreshold", kInteger, Shown<Number<2>>, L"%d"},
    {Word(73), Word(4), L"MV9100_SaturationPixelThreshold", kInteger, Shown<Number<4>>, L"%d"},
    {Word(21), Word(3), L"MV9100_SaturatedPixels", kInteger, Shown<Number<3>>, L"%d"},
    {Word(77), Word(1), L"MV9100_SaturationFlag", kFlag, ShownFlag<IsSet>},
    {Word(32), Word(1), L"MV9100_IRIGLocked", kFlag, ShownFlag<IsSet>},
    {Word(33), Word(1), L"MV9100_HumiditySensor", kInteger, Shown<Number<1>>, L"%d"},
    {Word(34), Word(1), L"MV9100_PressureSensor", kInteger, Shown<Number<1>>, L"%d"},
    {Word(35), Word(2), L"MV9100_TempSensor", kFloat, Shown<Hundredths>, L"%0.2f"},
    {Word(43), Word(2), L"MV9100_FrontPanelTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"},
    {Word(45), Word(2), L"MV9100_AirGapTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"},
    {Word(47), Word(2), L"MV9100_DewarTemp", kFloat, Shown<Celsius>, L"%0.2f", L"°C"},
    {Word(52), Word(2), L"MV9100_DigitalGain", kFloat, Shown<DigitalGain>, L"%0.3f"},
    {Word(54), Word(2), L"MV9100_DigitalOffset", kFloat, Shown<DigitalOffset>, L"%0.1f"},
    {Word(58), Word(1), L"MV9100_ADResolution", kInteger, Shown<Number<1>>, L"%d"},
    {Word(59), Word(2), L"MV9100_AnalogOffset", kFloat, Shown<AnalogOffset>, L"%f"},
    {Word(61), Word(2), L"MV9100_AnalogIn1", kFloat, Shown<Volts>, L"%0.2f"},
    {Word(63), Word(2), L"MV9100_AnalogIn2", kFloat, Shown<Volts>, L"%0.2f"},
    {Word(65), Word(2), L"MV9100_AnalogIn3", kFloat, Shown<Volts>, L"%0.2f"},
    {Word(67), Word(1), L"MV9100_DigitalIn", kBitfield, Shown<Number<1>>, L"%02X"},
    {Word(68), Word(1), L"MV9100_DigitalOut", kBitfield, Shown<Number<1>>, L"%02X"},
    {Word(69), Word(4), L"MV9100_FrameRate", kFloat, Shown<FrameRate>, L"%0.2f", L"Hz"},
    {Word(117), Word(1), L"MV9100_DetectorType", kInteger, Shown<Number<1>>, L"%d"},
    {Word(118), Word(1), L"MV9100_ROICType", kInteger, Shown<Number<1>>, L"%d"},
    {Word(119), Word(1), L"MV9100_CameraType", kInteger, Shown<Number<1>>, L"%d"},
    {Word(120), Word(3), L"MV9100_CameraSN", kInteger, Shown<Number<3>>, L"%d"},
    {Word(123), Word(1), L"MV9100_LensID", kInteger, Shown<Number<1>>, L"%d"},
};

}  // namespace

void AddValues(CFrameInfoExtra& extra, const u8* header) { AddFields(extra, kFields, header); }
void Describe(TArray<SFrameField>& fields, const u8* header) { DescribeFields(fields, kFields, header); }

}  // namespace ovix::reduce::mvfalcon
