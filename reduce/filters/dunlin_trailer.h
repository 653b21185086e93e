#pragma once

#include <algorithm>
#include <span>
#include <type_traits>

#include "core/bytes.h"
#include "core/numbers.h"
#include "reduce/filters/dunlin_frame_info_reduce_object.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/filters/frame_values.h"

/// Trailers of the Lapwing and Wren cameras, told field by field: one table drives what `ParseFrame` reads, what it
/// shows, and the description of the bytes.
namespace ovix::reduce {

/// All that a trailer can say. What a layout does not have is 0.
struct SDunlinTrailer : SDunlinFrame {
    u16 version = 0;
    u16 length = 0;  ///< of the trailer, in the unit of its layout
    u16 checksum = 0;
    u8 videoPreset = 0;              ///< both indices in one byte
    float integrationExactTime = 0;  ///< `integrationTime` with its fraction
};

/// One field of a layout: where it stands, how it is read, its name, its kind and its text.
struct SDunlinField {
    u32 offset;  ///< from the start of the trailer
    u32 size;    ///< in bytes
    const wchar_t* name;
    const frame_values::SKind* kind;  ///< null for what is no value of the frame
    const wchar_t* unit;
    void (*load)(SDunlinTrailer& values, const u8* trailer, u32 offset);
    CString (*text)(const SDunlinTrailer& values, const frame_values::SKind* kind);
};

/// Fields, those with a kind in the order in which they are shown.
using DunlinFields = std::span<const SDunlinField>;
/// The parts of a layout. The first one is its clock: time stamp, frame counter and time code, which is all that the
/// light operations read.
using DunlinLayout = std::span<const DunlinFields>;

void LoadTrailer(SDunlinTrailer& values, DunlinFields part, const u8* trailer);
void LoadTrailer(SDunlinTrailer& values, DunlinLayout layout, const u8* trailer);
/// Tells all fields of a trailer that stands at `offset` in its frame.
void DescribeTrailer(TArray<SFrameField>& fields, DunlinLayout layout, const u8* trailer, u64 offset);

/// The time of the frame: from the time code when bit 0 of the time flags is set, else from the time stamp. A time code
/// whose year does not count leaves the year of `time` as it was.
void SetTrailerTime(CDateTime& time, const SDunlinTrailer& values);
/// Whether that time has a year of its own.
bool HasTrailerYear(const SDunlinTrailer& values);

/// Rows of a table. `kMember` names the value, `kIndex` the element of one that is an array.
namespace dunlin {

template <auto kMember, u32 kIndex, class Values>
constexpr auto& ValueOf(Values& values) {
    auto& member = values.*kMember;
    if constexpr (std::is_array_v<std::remove_reference_t<decltype(member)>>) {
        return member[kIndex];
    } else {
        return member;
    }
}

/// The kind is looked at when the text is made: the sanitizers' build takes no address for constant.
template <auto kMember, u32 kIndex>
CString TextOf(const SDunlinTrailer& values, const frame_values::SKind* kind) {
    const auto value = ValueOf<kMember, kIndex>(values);
    if (kind == &frame_values::kFlag) return frame_values::FlagText(value != 0);
    if constexpr (std::is_floating_point_v<decltype(value)>) {
        return CFlt32::ToString(value);
    } else {
        return CUInt64::ToString(value);
    }
}

/// What `kDecode(trailer, offset)` makes of the bytes.
template <auto kDecode, auto kMember, u32 kIndex = 0>
constexpr SDunlinField Decoded(u32 offset, u32 size, const wchar_t* name, const frame_values::SKind* kind = nullptr,
                               const wchar_t* unit = L"") {
    const auto load = [](SDunlinTrailer& values, const u8* trailer, u32 at) {
        ValueOf<kMember, kIndex>(values) = kDecode(trailer, at);
    };
    return {offset, size, name, kind, unit, load, &TextOf<kMember, kIndex>};
}

template <class Stored>
Stored LoadStored(const u8* trailer, u32 offset) {
    return LoadLittle<Stored>(trailer + offset);
}
/// A little-endian number that stands in the trailer as `Stored`.
template <class Stored, auto kMember, u32 kIndex = 0>
constexpr SDunlinField Number(u32 offset, const wchar_t* name, const frame_values::SKind* kind = nullptr,
                              const wchar_t* unit = L"") {
    return Decoded<LoadStored<Stored>, kMember, kIndex>(offset, sizeof(Stored), name, kind, unit);
}

template <u32 kFirst, u32 kCount>
u8 LoadBits(const u8* trailer, u32 offset) {
    return static_cast<u8>(trailer[offset] >> kFirst & ((1u << kCount) - 1));
}
/// `kCount` bits of a byte from bit `kFirst` on.
template <u32 kFirst, u32 kCount, auto kMember>
constexpr SDunlinField Bits(u32 offset, const wchar_t* name, const frame_values::SKind* kind = nullptr) {
    return Decoded<LoadBits<kFirst, kCount>, kMember>(offset, 1, name, kind);
}

/// Where the last field ends; a `static_assert` on it keeps table and size in step.
constexpr u32 End(DunlinLayout layout) {
    u32 end = 0;
    for (const DunlinFields part : layout) {
        for (const SDunlinField& field : part) end = std::max(end, field.offset + field.size);
    }
    return end;
}

}  // namespace dunlin

}  // namespace ovix::reduce
