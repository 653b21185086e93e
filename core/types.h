#pragma once

#include <cstddef>
#include <cstdint>

/// Marks what `ovix.so` exports; everything else in it is hidden.
#define OVIX_API __attribute__((visibility("default")))

namespace ovix {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

static_assert(sizeof(wchar_t) == 4, "texts are UTF-32 in memory");

}  // namespace ovix
