#pragma once

#include "reduce/filters/day_clock.h"
#include "reduce/filters/frame_table.h"

/// The header of the Falcon camera family: 128 words of 16 bits, each with one byte in its low half.
/// `docs/formats/mvfalcon.md` shows it whole.
namespace ovix::reduce::mvfalcon {

constexpr u16 kHeaderWords = 128;

// What operations read in place.
constexpr u32 kPreset = Word(1);
constexpr u32 kFrameCounter = Word(16);
constexpr u32 kClock = Word(24);

/// The bytes of a field, the most significant first.
template <u32 kCount>
constexpr u32 Bytes(const u8* bytes) {
    u32 value = 0;
    for (u32 i = 0; i < kCount; ++i) value = value << 8 | bytes[Word(i)];
    return value;
}

constexpr u8 Preset(const u8* header) { return header[kPreset] & 3; }
/// The same as the light operations read it, without its mask.
constexpr u8 WholePreset(const u8* header) { return header[kPreset]; }
constexpr u32 FrameCounter(const u8* header) { return Bytes<3>(header + kFrameCounter); }
/// A day beyond those of a year is not limited, unlike in the Osprey family.
inline SDayClock Clock(const u8* header) { return ClockOfDigits(header + kClock); }

/// The values in their order.
void AddValues(CFrameInfoExtra& extra, const u8* header);
void Describe(TArray<SFrameField>& fields, const u8* header);

}  // namespace ovix::reduce::mvfalcon
