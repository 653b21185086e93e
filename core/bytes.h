#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstring>
#include <span>
#include <type_traits>

#include "core/guid.h"
#include "core/types.h"

namespace ovix {

/// Numbers to and from bytes. All are safe at any address; a compiler makes one move (and a swap) of each.
namespace detail {

template <std::size_t N>
struct TBits;
template <>
struct TBits<1> {
    using Type = u8;
};
template <>
struct TBits<2> {
    using Type = u16;
};
template <>
struct TBits<4> {
    using Type = u32;
};
template <>
struct TBits<8> {
    using Type = u64;
};
template <class T>
using BitsOf = typename TBits<sizeof(T)>::Type;

}  // namespace detail

template <class T>
concept Number = std::is_arithmetic_v<T> && !std::same_as<T, bool>;

template <Number T>
constexpr T LoadLittle(const u8* p) {
    using Bits = detail::BitsOf<T>;
    Bits bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bits = static_cast<Bits>(bits | static_cast<Bits>(Bits{p[i]} << (8 * i)));
    return std::bit_cast<T>(bits);
}
template <Number T>
constexpr T LoadBig(const u8* p) {
    using Bits = detail::BitsOf<T>;
    Bits bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        bits = static_cast<Bits>(bits | static_cast<Bits>(Bits{p[i]} << (8 * (sizeof(T) - 1 - i))));
    }
    return std::bit_cast<T>(bits);
}
template <Number T>
constexpr void StoreLittle(u8* p, T value) {
    const auto bits = std::bit_cast<detail::BitsOf<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i) p[i] = static_cast<u8>(bits >> (8 * i));
}
template <Number T>
constexpr void StoreBig(u8* p, T value) {
    const auto bits = std::bit_cast<detail::BitsOf<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i) p[i] = static_cast<u8>(bits >> (8 * (sizeof(T) - 1 - i)));
}

constexpr GUID LoadGuid(const u8* p) {
    GUID id{LoadLittle<u32>(p), LoadLittle<u16>(p + 4), LoadLittle<u16>(p + 6), {}};
    for (int i = 0; i < 8; ++i) id.data4[i] = p[8 + i];
    return id;
}
constexpr void StoreGuid(u8* p, const GUID& id) {
    StoreLittle(p, id.data1);
    StoreLittle(p + 4, id.data2);
    StoreLittle(p + 6, id.data3);
    for (int i = 0; i < 8; ++i) p[8 + i] = id.data4[i];
}

/// A cursor over bytes that came from outside. It does not exist without an end: a read that would pass the end
/// answers false and moves nothing.
class CByteCursor {
  public:
    CByteCursor(const void* data, u64 size) : next_(static_cast<const u8*>(data)), remaining_(size) {}

    u64 Remaining() const { return remaining_; }
    /// n bytes in place, or null when fewer remain.
    const u8* Take(u64 n) {
        if (n > remaining_) return nullptr;
        const u8* taken = next_;
        next_ += n;
        remaining_ -= n;
        return taken;
    }
    template <Number T>
    bool Read(T& value) {
        const u8* bytes = Take(sizeof(T));
        if (bytes) value = LoadLittle<T>(bytes);
        return bytes != nullptr;
    }
    template <Number T>
    bool ReadBig(T& value) {
        const u8* bytes = Take(sizeof(T));
        if (bytes) value = LoadBig<T>(bytes);
        return bytes != nullptr;
    }
    /// Whether `count` elements of `size` bytes remain; the product cannot wrap.
    bool Holds(u64 count, u64 size) const { return size == 0 || count <= remaining_ / size; }

  private:
    const u8* next_;
    u64 remaining_;
};

/// Fields of one width that stand one behind the other in a record, and how often that repeats.
struct SSwapRun {
    u32 offset;
    u32 fields;
    u32 width;  ///< bytes of a field
    u32 rows = 1;
    u32 stride = 0;  ///< bytes from one row to the next
};

/// Turns the bytes of every listed field around, in place; a second call turns them back. All else stays.
inline void SwapFields(u8* record, std::span<const SSwapRun> runs) {
    for (const SSwapRun& run : runs) {
        for (u32 row = 0; row < run.rows; ++row) {
            u8* field = record + run.offset + row * run.stride;
            for (u32 i = 0; i < run.fields; ++i, field += run.width) std::reverse(field, field + run.width);
        }
    }
}

}  // namespace ovix
