#pragma once

#include <array>
#include <cstring>
#include <span>

#include "reduce/filters/dunlin_filter.h"

/// The trailer of 96 bytes with the signature "TOMZ", in the two variants that cameras send: that of Lapwing and the
/// older one of Wren. `docs/formats/lapwing.md` shows it whole.
namespace ovix::reduce::tomz {

constexpr u32 kSize = 96;
constexpr u32 kSignatureSize = 4;

// What operations read in place.
constexpr u32 kTimeStamp = 8;      ///< u64, microseconds
constexpr u32 kFrameCounter = 16;  ///< u32
constexpr u32 kVideoPreset = 20;   ///< u8, two indices of four bits
constexpr u32 kActivePreset = 22;  ///< u8
constexpr u32 kMasterClock = 44;
constexpr u32 kFlags = 58;  ///< u8
constexpr u32 kTimeCode = 61;
constexpr u32 kLockinBits = 82;           ///< u8
constexpr u32 kLapwingTriggerInput = 56;  ///< u8, not 0: it fired

enum EVariant : u8 { Lapwing = 1, OlderWren = 2 };

/// The fields of both but the time code, those that are shown in their order. Members are meant for Lapwing; an older
/// Wren trailer is turned into a native record.
using DunlinFields = std::span<const TKeptField<SDunlinFrame>>;
extern const DunlinFields kFields;

inline bool HasSignature(const u8* trailer) { return std::memcmp(trailer, "TOMZ", kSignatureSize) == 0; }
/// All fields of a trailer that stands at `offset` in its frame.
void Describe(TArray<SFrameField>& fields, const u8* trailer, u64 offset, EVariant variant);

/// In microseconds and Hz. The trailer counts the ticks of an integration less one; the most that it can count wraps to
/// none.
template <EVariant kVariant>
float IntegrationTime(const u8* trailer);
template <EVariant kVariant>
float FrameRate(const u8* trailer);

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
