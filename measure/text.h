#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

#include "core/core.h"

/// Texts of errors and findings, made of pieces.
namespace ovix::measure {

inline void Append(std::string& text, std::string_view piece) { text += piece; }
inline void Append(std::string& text, std::integral auto number) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    text.append(digits, static_cast<std::size_t>(end - digits));
}

/// Strings and whole numbers one behind the other: `Say("frame ", 3)`.
template <class... Pieces>
std::string Say(const Pieces&... pieces) {
    std::string text;
    (Append(text, pieces), ...);
    return text;
}

/// In capital letters with at least so many digits.
inline std::string Hex(u64 number, std::size_t digits) {
    std::string text(digits, '0');
    for (std::size_t i = digits; i-- > 0; number >>= 4) text[i] = "0123456789ABCDEF"[number & 15];
    return text;
}

}  // namespace ovix::measure
