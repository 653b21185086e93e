#include "core/numbers.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace ovix {

namespace {

template <class T>
CString Shortest(T value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return CString(text, static_cast<int>(end - text));
}

locale_t Neutral() {
    static const locale_t neutral = newlocale(LC_ALL_MASK, "C", nullptr);
    return neutral;
}

}  // namespace

CString CInt32::ToString(i32 value) { return Shortest(value); }
CString CUInt8::ToString(u8 value) { return Shortest(u32{value}); }
CString CUInt16::ToString(u16 value) { return Shortest(u32{value}); }
CString CUInt32::ToString(u32 value) { return Shortest(value); }
CString CUInt64::ToString(u64 value) { return Shortest(value); }
CString CFlt32::ToString(float value) { return std::isnan(value) ? CString(L"nan") : Shortest(value); }

void ltotcs(i32 value, wchar_t* dest, std::size_t size) {
    if (!size) return;
    const CString text = Shortest(value);
    const std::size_t n = std::min(static_cast<std::size_t>(text.length()), size - 1);
    std::copy_n(text.c_str(), n, dest);
    dest[n] = 0;
}

i8 CVariant::ToInt8() const { return static_cast<i8>(ToUInt64()); }
u64 CVariant::ToUInt64() const { return ::wcstoull_l(text_, nullptr, 10, Neutral()); }

i32 TextToInt32(const wchar_t* text) {
    constexpr i64 kLeast = std::numeric_limits<i32>::min();
    constexpr i64 kMost = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(TextToInt64(text), kLeast, kMost));
}
i64 TextToInt64(const wchar_t* text) { return ::wcstoll_l(text, nullptr, 10, Neutral()); }
double TextToDouble(const wchar_t* text) { return ::wcstod_l(text, nullptr, Neutral()); }

}  // namespace ovix
