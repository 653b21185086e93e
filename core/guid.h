#pragma once

#include "core/types.h"

namespace ovix {

/// A globally unique identifier: 16 bytes, compared whole. The memory form (the first three groups little-endian,
/// the other eight bytes as printed) is also the form in files.
struct GUID {
    u32 data1 = 0;
    u16 data2 = 0;
    u16 data3 = 0;
    u8 data4[8] = {};

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
static_assert(sizeof(GUID) == 16);

struct CGUID {
    /// The zero GUID: no class, type or block bears it.
    static constexpr GUID Empty{};
};

namespace detail {

consteval u8 HexDigit(char c) {
    if (c >= '0' && c <= '9') return static_cast<u8>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<u8>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f') return static_cast<u8>(c - 'a' + 10);
    throw "a GUID is written with hexadecimal digits";
}

}  // namespace detail

/// `"{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}"_guid`, checked when compiled.
consteval GUID operator""_guid(const char* text, std::size_t length) {
    constexpr int kPlaceOfDigit[32] = {1,  2,  3,  4,  5,  6,  7,  8,  10, 11, 12, 13, 15, 16, 17, 18,
                                       20, 21, 22, 23, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36};
    if (length != 38 || text[0] != '{' || text[37] != '}') throw "a GUID is written in braces";
    if (text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-') throw "a GUID has five groups";
    u8 bytes[16] = {};
    for (int i = 0; i < 32; ++i) {
        bytes[i / 2] = static_cast<u8>((bytes[i / 2] << 4) | detail::HexDigit(text[kPlaceOfDigit[i]]));
    }
    GUID id;
    id.data1 = static_cast<u32>(bytes[0]) << 24 | static_cast<u32>(bytes[1]) << 16 | static_cast<u32>(bytes[2]) << 8 |
               bytes[3];
    id.data2 = static_cast<u16>(bytes[4] << 8 | bytes[5]);
    id.data3 = static_cast<u16>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i) id.data4[i] = bytes[8 + i];
    return id;
}

}  // namespace ovix
