#include "reduce/filters/osprey_filter.h"

#include <algorithm>
#include <cstring>

#include "core/visit.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_family.h"

/// The Osprey camera family: a header line of 96 words of 16 bits, of which most hold one byte.
/// `docs/formats/osprey.md` shows it whole.
///
/// Words are combined whole, so a high byte that is not 0 changes the field; only what a function here says to be bits
/// is masked.
namespace ovix::reduce {

namespace {

using namespace frame_values;

constexpr u16 kHeaderWords = 96;
constexpr u32 kHeaderSize = 2 * kHeaderWords;

// Byte offsets from the line's start.
constexpr u32 kPreset = Word(1);
constexpr u32 kIntegrationTime = Word(2);
constexpr u32 kFPAControlWord = Word(6);
constexpr u32 kFPAWindowWord = Word(10);
constexpr u32 kFrameCounter = Word(18);
constexpr u32 kResolution = Word(20);
constexpr u32 kSaturation = Word(21);

/// The second block, with clock and temperatures, stands further ahead in lines that are too narrow for the header.
constexpr u32 TimeBlock(u16 width) { return Word(width < kHeaderWords ? 24 : 69); }

// Byte offsets from the second block's start. Three constants follow the clock: 0, then 0xC0, then 0x0D.
constexpr u32 kClockWords = 8;
constexpr u32 kZeros = Word(8);
constexpr u32 kC0 = Word(11);
constexpr u32 k0D = Word(12);
constexpr u32 kFrontPanelTemp = Word(19);
constexpr u32 kAirGapTemp = Word(21);
constexpr u32 kDewarTemp = Word(23);
constexpr u32 kTimeBlockWords = 25;
static_assert(TimeBlock(kHeaderWords) + Word(kTimeBlockWords) <= kHeaderSize);

// Each reads a field where it begins.

/// The words of a field, the most significant first.
template <u32 kCount>
constexpr u32 Words(const u8* bytes) {
    u32 value = 0;
    for (u32 i = 0; i < kCount; ++i) value = value << 8 | LoadLittle<u16>(bytes + Word(i));
    return value;
}
constexpr u8 Preset(const u8* bytes) { return static_cast<u8>(WordBits<4, 5>(bytes)); }
/// 0x80 or 0.
constexpr u8 SaturationFlag(const u8* bytes) { return *bytes & 0x80; }
constexpr u32 Saturation(const u8* bytes) { return WordBits<0, 3>(bytes) << 16 | Words<2>(bytes + Word(1)); }
/// Degrees Celsius from 12 bits, the upper four of them in the second word.
constexpr float Temperature(const u8* bytes) {
    const u32 raw = WordBits<0, 3>(bytes + Word(1)) << 8 | LoadLittle<u16>(bytes);
    return (static_cast<float>(raw) * 0.00234375f - 0.5f) * 100.0f;
}
/// The raw form of a temperature.
u16 RawTemperature(float celsius) {
    return static_cast<u16>(TruncateTo<i64>((static_cast<double>(celsius) / 100 + 0.5) / 2.4 * 1024));
}

/// From the second block; the day is 999 at most.
SDayClock Clock(const u8* timeBlock) {
    SDayClock clock = ClockOfDigits(timeBlock);
    clock.day = std::min(clock.day, 999);
    return clock;
}

/// Milliseconds. The 93 counts are added for show alone; a decoded header keeps the raw count.
double Milliseconds(const u8* bytes) {
    return (static_cast<double>(static_cast<i32>(Words<4>(bytes))) + 93) * 8e-8 * 1000.0;
}
void Time(CFieldText& text, const u8* timeBlock) { Clock(timeBlock).AddTo(text); }

/// This one is written small, alone among the flags of all families.
constexpr SValueKind kSmallFlag{L"flag", L"ascii", true};

/// In the order in which the values are shown, here and in the second block.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, unit
    {kPreset, Word(1), L"OS_ActivePreset", kCounter, DecimalText<Preset>},
    {kIntegrationTime, Word(4), L"OS_IntegrationTime", kFloat, FixedText<Milliseconds, 6>, L"ms"},
    {kFrameCounter, Word(2), L"OS_FrameCounter", kCounter, DecimalText<Words<2>>},
    {kSaturation, Word(1), L"OS_SaturationFlag", kSmallFlag, FlagText<SaturationFlag>},
    {kSaturation, Word(3), L"OS_Saturation", kInteger, DecimalText<Saturation>},
    {kFPAControlWord, Word(4), L"OS_FPAControlWord", kInteger, HexText<Words<4>, 8>},
    {kFPAWindowWord, Word(4), L"OS_FPAWindowWord", kInteger, HexText<Words<4>, 8>},
    {kResolution, Word(1), L"OS_Resolution", kInteger, DecimalText<Words<1>>},
};
constexpr STableField kTimeBlockFields[] = {
    {0, Word(kClockWords), L"Time", kDescribedOnly, Time},
    {kFrontPanelTemp, Word(2), L"OS_FrontPannelTemp", kFloat, FixedText<Temperature, 6>, L"°C"},
    {kAirGapTemp, Word(2), L"OS_AirGapTemp", kFloat, FixedText<Temperature, 6>, L"°C"},
    {kDewarTemp, Word(2), L"OS_DewarTemp", kFloat, FixedText<Temperature, 6>, L"°C"},
};
static_assert(EndOf(kTimeBlockFields) == Word(kTimeBlockWords));

constexpr SHeaderLine kLine{.frameType = frame_types::kOsprey,
                            .frameName = L"IACF",
                            .headerType = frame_types::kOspreyHeader,
                            .words = kHeaderWords,
                            .bytesRead = kHeaderSize};
static_assert(kHeaderSize == sizeof COspreyFrameInfoReduceObject::header);

/// Two digits of a number from that of `power` on, the higher one in the higher half.
u16 TwoDigits(i32 value, i32 power) {
    const auto digit = [&](i32 p) { return static_cast<u32>(value / p % 10) & 15; };
    return static_cast<u16>(digit(10 * power) << 4 | digit(power));
}

/// The reverse of `Clock`, into the clock's words, high bytes included.
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

/// The low bytes of `count` words, the most significant first; the high bytes stay.
void StoreLowBytes(u8* line, u32 offset, u32 value, u32 count) {
    for (u32 i = 0; i < count; ++i) line[offset + Word(i)] = static_cast<u8>(value >> (8 * (count - 1 - i)));
}

void StoreTemperature(u8* timeBlock, u32 offset, float celsius) {
    const u16 raw = RawTemperature(celsius);
    timeBlock[offset] = static_cast<u8>(raw);
    timeBlock[offset + Word(1)] = static_cast<u8>(raw >> 8);
}

float ToKelvin(float celsius) { return static_cast<float>(static_cast<double>(celsius) + 273.15); }

}  // namespace

COspreyFilter::COspreyFilter() : CHeaderLineFilter(kLine) {}

bool COspreyFilter::Register() {
    return RegisterHeaderLineFilter<COspreyFilter, kLine>(
        L"Osprey", [](const void* frame, GUID, u16 width, u16, u32, TArray<SFrameField>& fields) {
            const u8* line = static_cast<const u8*>(frame);
            DescribeFields(fields, kFields, line);
            DescribeFields(fields, kTimeBlockFields, line + TimeBlock(width), TimeBlock(width));
        });
}

bool COspreyFilter::ParseHeader(SHeader& header, void* line, u16 width) {
    const u8* bytes = static_cast<const u8*>(line);
    header.preset = Preset(bytes + kPreset);
    header.integrationTime = Words<4>(bytes + kIntegrationTime);
    header.frameCounter = Words<2>(bytes + kFrameCounter);
    header.saturationFlag = SaturationFlag(bytes + kSaturation);
    header.saturation = Saturation(bytes + kSaturation);
    header.fpaControlWord = Words<4>(bytes + kFPAControlWord);
    header.fpaWindowWord = Words<4>(bytes + kFPAWindowWord);
    header.resolution = Words<1>(bytes + kResolution);

    const u8* timeBlock = bytes + TimeBlock(width);
    const SDayClock clock = Clock(timeBlock);
    header.day = clock.day;
    header.hours = clock.hours;
    header.minutes = clock.minutes;
    header.seconds = clock.seconds;
    header.milliseconds = clock.milliseconds;
    header.microseconds = clock.microseconds;
    header.airGapTemp = Temperature(timeBlock + kAirGapTemp);
    header.dewarTemp = Temperature(timeBlock + kDewarTemp);
    header.frontPanelTemp = Temperature(timeBlock + kFrontPanelTemp);
    return true;
}

bool COspreyFilter::EncodeHeader(SHeader& header, void* line, u16 width) {
    u8* bytes = static_cast<u8*>(line);
    bytes[kPreset] = header.preset;  // unshifted, although it is read from bits 4 and 5
    StoreLowBytes(bytes, kIntegrationTime, header.integrationTime, 4);
    StoreLowBytes(bytes, kFPAControlWord, header.fpaControlWord, 4);
    StoreLowBytes(bytes, kFPAWindowWord, header.fpaWindowWord, 4);
    StoreLowBytes(bytes, kFrameCounter, header.frameCounter, 2);
    const u32 resolution = (LoadLittle<u16>(bytes + kResolution) & 0xFF00u) | header.resolution;
    StoreLittle(bytes + kResolution, static_cast<u16>(resolution));
    StoreLowBytes(bytes, kSaturation, header.saturation | (header.saturationFlag > 0 ? 0x800000 : 0), 3);

    u8* timeBlock = bytes + TimeBlock(width);
    StoreClock(timeBlock, {.day = header.day,
                           .hours = header.hours,
                           .minutes = header.minutes,
                           .seconds = header.seconds,
                           .milliseconds = header.milliseconds,
                           .microseconds = header.microseconds});
    StoreLowBytes(timeBlock, kZeros, 0, 3);
    timeBlock[kC0] = 0xC0;
    timeBlock[k0D] = 0x0D;
    StoreTemperature(timeBlock, kFrontPanelTemp, header.frontPanelTemp);
    StoreTemperature(timeBlock, kAirGapTemp, header.airGapTemp);
    StoreTemperature(timeBlock, kDewarTemp, header.dewarTemp);
    return true;
}

const wchar_t* COspreyFilter::GetName() const { return L"MV7100"; }

u8 COspreyFilter::PresetOf(const u8* header) const { return Preset(header + kPreset); }
u64 COspreyFilter::CounterOf(const u8* header) const { return Words<2>(header + kFrameCounter); }
void COspreyFilter::SetTime(CDateTime& time, const u8* header, u16 width) const {
    Clock(header + TimeBlock(width)).SetInThisYear(time);
}

bool COspreyFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                               CReduceObjectArray& objects, u8& preset) {
    if (dest.type != UInt16 && dest.type != NoPixels) return false;
    return CHeaderLineFilter::ParseFrame(frame, type, width, height, frameSize, dest, objects, preset);
}

bool COspreyFilter::FillObjects(const u8* header, GUID, u16 width, CReduceObjectArray& objects, u8& preset) {
    preset = PresetOf(header);
    const auto calibration = objects.Get<CTernFactoryCalReduceObject>(preset, true);
    const auto info = objects.Get<CFrameInfoReduceObject>(preset, true);
    const auto raw = objects.Get<COspreyFrameInfoReduceObject>(preset, true);
    if (!calibration || !info || !raw) return false;

    const u8* timeBlock = header + TimeBlock(width);
    calibration->frontPanelTemp = ToKelvin(Temperature(timeBlock + kFrontPanelTemp));
    calibration->airGapTemp = ToKelvin(Temperature(timeBlock + kAirGapTemp));
    calibration->dewarTemp = ToKelvin(Temperature(timeBlock + kDewarTemp));

    std::memcpy(raw->header, header, sizeof raw->header);
    raw->headerWords = std::min(width, kHeaderWords);
    raw->valid = true;
    raw->preset = preset;
    raw->frameNumber = CounterOf(header);

    StartFrame(*info, preset, CounterOf(header));
    // Through the text: digits that make no time of day leave the time of the frame before.
    CFieldText time;
    Clock(timeBlock).AddTo(time);
    info->time.Set(time.c_str());
    CFrameValues values(info->extra);
    values.Add(kFields, header);
    values.Add(kTimeBlockFields, timeBlock);
    return true;
}

COspreyFrameInfoReduceObject::COspreyFrameInfoReduceObject() { persist = false; }

TSharedPtr<IReduceObject> COspreyFrameInfoReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    if (const auto copy = made.Cast<COspreyFrameInfoReduceObject>()) {
        u8* bytes = reinterpret_cast<u8*>(copy->header);
        const u32 kept = std::min(headerWords, kWords);  // words taken for bytes: users of copies find zeros behind
        std::memset(bytes + kept, 0, sizeof copy->header - kept);
    }
    return made;
}

}  // namespace ovix::reduce
