#include "core/numbers.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace ovix {

namespace {

template <class T>
CString Shortest(T value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return CString(text, static_cast<int>(end - text));
}

bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

struct SInteger {
    bool negative = false;
    u64 magnitude = 0;
};

SInteger ParseInteger(const wchar_t* p) {
    SInteger number;
    while (IsBlank(*p)) ++p;
    if (*p == L'+' || *p == L'-') number.negative = *p++ == L'-';
    for (; IsDigit(*p); ++p) {
        const auto digit = static_cast<u64>(*p - L'0');
        const bool fits = number.magnitude <= (CUInt64::Max - digit) / 10;
        number.magnitude = fits ? number.magnitude * 10 + digit : CUInt64::Max;
    }
    return number;
}

template <class T>
T Saturated(const SInteger& number) {
    constexpr auto kMax = static_cast<u64>(std::numeric_limits<T>::max());
    if (!number.negative) return static_cast<T>(std::min(number.magnitude, kMax));
    if (number.magnitude > kMax) return std::numeric_limits<T>::min();
    return static_cast<T>(-static_cast<T>(number.magnitude));
}

}  // namespace

CString CInt32::ToString(i32 value) { return Shortest(value); }
CString CUInt8::ToString(u8 value) { return Shortest(u32{value}); }
CString CUInt16::ToString(u16 value) { return Shortest(value); }
CString CUInt32::ToString(u32 value) { return Shortest(value); }
CString CUInt64::ToString(u64 value) { return Shortest(value); }
CString CFlt32::ToString(float value) { return Shortest(value); }

void ltotcs(i32 value, wchar_t* dest, std::size_t size) {
    if (!size) return;
    const CString text = Shortest(value);
    const std::size_t n = std::min(static_cast<std::size_t>(text.length()), size - 1);
    std::copy_n(text.c_str(), n, dest);
    dest[n] = 0;
}

i8 CVariant::ToInt8() const { return static_cast<i8>(ToUInt64()); }
u64 CVariant::ToUInt64() const {
    const SInteger number = ParseInteger(text_);
    return number.negative ? u64{0} - number.magnitude : number.magnitude;
}

i32 TextToInt32(const wchar_t* text) { return Saturated<i32>(ParseInteger(text)); }
i64 TextToInt64(const wchar_t* text) { return Saturated<i64>(ParseInteger(text)); }
double TextToDouble(const wchar_t* text) {
    while (IsBlank(*text)) ++text;
    if (*text == L'+') ++text;
    std::string narrow;
    for (; *text && *text < 128; ++text) narrow += static_cast<char>(*text);
    double value = 0;
    std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
    return value;
}

}  // namespace ovix
