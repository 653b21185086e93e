#pragma once

#include "reduce/filters/day_clock.h"
#include "reduce/filters/frame_table.h"

/// The header of the Osprey camera family: 96 words of 16 bits, of which most hold one byte. `docs/formats/osprey.md`
/// shows it whole.
///
/// Words are combined whole, so a high byte that is not 0 changes the field; only what a function here says to be bits
/// is masked.
namespace ovix::reduce::osprey {

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
u16 RawTemperature(float celsius);
/// From the second block; the day is 999 at most.
SDayClock Clock(const u8* timeBlock);
/// The reverse, into the clock's words, high bytes included.
void StoreClock(u8* timeBlock, const SDayClock& clock);

/// The values in their order.
void AddValues(CFrameInfoExtra& extra, const u8* line, u16 width);
void Describe(TArray<SFrameField>& fields, const u8* line, u16 width);

}  // namespace ovix::reduce::osprey
