#pragma once

#include <array>

#include "reduce/filters/dunlin_trailer.h"

/// The trailer of 96 bytes with the signature "TOMZ", in the two variants that cameras send: that of Lapwing and the
/// older one of Wren. `docs/formats/lapwing.md` shows it whole.
namespace ovix::reduce::tomz {

constexpr u32 kSize = 96;
constexpr u32 kSignatureSize = 4;
constexpr u16 kVersion = 1;        ///< the one that is known
constexpr u32 kActivePreset = 22;  ///< u8

constexpr u32 kLapwingTriggerInput = 56;  ///< u8, not 0: it fired

/// Layouts. The two have the same clock.
extern const DunlinLayout kLapwing;
extern const DunlinLayout kOlderWren;
extern const DunlinFields kClock;

bool HasSignature(const u8* trailer);

/// A word that tells whether a trailer is whole, and the value that it has then.
struct SExpectedWord {
    u32 offset;
    u16 value;
    const wchar_t* meaning;

    bool IsThere(const u8* trailer) const { return LoadLittle<u16>(trailer + offset) == value; }
};
/// Version, length, and the sum of all words before the last as the checksum.
std::array<SExpectedWord, 3> ExpectedWords(const u8* trailer);

}  // namespace ovix::reduce::tomz
