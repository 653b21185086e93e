#include "reduce/filters/osprey_header.h"

#include <algorithm>

#include "core/numeric_cast.h"

namespace ovix::reduce::osprey {

namespace {

using namespace frame_values;

/// This one is written small, alone among the flags of all families.
constexpr SKind kSmallFlag{L"flag", L"ascii"};

/// Milliseconds. The 93 counts are added for show alone; a decoded header keeps the raw count.
double Milliseconds(const u8* bytes) {
    return (static_cast<double>(static_cast<i32>(Words<4>(bytes))) + 93) * 8e-8 * 1000.0;
}
CString Time(const u8* timeBlock, const wchar_t*) { return Clock(timeBlock).Text(); }

/// In the order in which the values are shown, here and in the second block.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, format, unit
    {kPreset, Word(1), L"OS_ActivePreset", kCounter, Shown<Preset>, L"%u"},
    {kIntegrationTime, Word(4), L"OS_IntegrationTime", kFloat, Shown<Milliseconds>, L"%f", L"ms"},
    {kFrameCounter, Word(2), L"OS_FrameCounter", kCounter, Shown<Words<2>>, L"%u"},
    {kSaturation, Word(1), L"OS_SaturationFlag", kSmallFlag, ShownFlag<SaturationFlag>},
    {kSaturation, Word(3), L"OS_Saturation", kInteger, Shown<Saturation>, L"%u"},
    {kFPAControlWord, Word(4), L"OS_FPAControlWord", kInteger, Shown<Words<4>>, L"0x%08X"},
    {kFPAWindowWord, Word(4), L"OS_FPAWindowWord", kInteger, Shown<Words<4>>, L"0x%08X"},
    {kResolution, Word(1), L"OS_Resolution", kInteger, Shown<Words<1>>, L"%u"},
};
constexpr STableField kTimeBlockFields[] = {
    {0, Word(kClockWords), L"Time", kToldOnly, Time},
    {kFrontPanelTemp, Word(2), L"OS_FrontPannelTemp", kFloat, Shown<Temperature>, L"%f", L"°C"},
    {kAirGapTemp, Word(2), L"OS_AirGapTemp", kFloat, Shown<Temperature>, L"%f", L"°C"},
    {kDewarTemp, Word(2), L"OS_DewarTemp", kFloat, Shown<Temperature>, L"%f", L"°C"},
};

/// Two digits of a number from that of `power` on, the higher one in the higher half.
u16 TwoDigits(i32 value, i32 power) {
    const auto digit = [&](i32 p) { return static_cast<u32>(value / p % 10) & 15; };
    return static_cast<u16>(digit(10 * power) << 4 | digit(power));
}

}  // namespace

u16 RawTemperature(float celsius) {
    return static_cast<u16>(TruncateTo<i64>((static_cast<double>(celsius) / 100 + 0.5) / 2.4 * 1024));
}

SDayClock Clock(const u8* timeBlock) {
    SDayClock clock = ClockOfDigits(timeBlock);
    clock.day = std::min(clock.day, 999);
    return clock;
}

void StoreClock(u8* timeBlock, const SDayClock& clock) {
    const i32 microseconds = clock.microseconds;
    const i32 milliseconds = clock.milliseconds;
    const u16 words[kClockWords] = {
        TwoDigits(microseconds, 1),
        static_cast<u16>((TwoDigits(milliseconds, 1) & 15) << 4 | (TwoDigits(microseconds, 100) & 15)),
        TwoDigits(milliseconds, 10),
        TwoDigits(clock.seconds, 1),
        TwoDigits(clock.minutes, 1),
        TwoDigits(clock.hours, 1),
        TwoDigits(clock.day, 1),
        TwoDigits(clock.day, 100),
    };
    for (u32 i = 0; i < kClockWords; ++i) StoreLittle(timeBlock + Word(i), words[i]);
}

void AddValues(CFrameInfoExtra& extra, const u8* line, u16 width) {
    AddFields(extra, kFields, line);
    AddFields(extra, kTimeBlockFields, line + TimeBlock(width));
}

void Describe(TArray<SFrameField>& fields, const u8* line, u16 width) {
    DescribeFields(fields, kFields, line);
    DescribeFields(fields, kTimeBlockFields, line + TimeBlock(width), TimeBlock(width));
}

}  // namespace ovix::reduce::osprey
