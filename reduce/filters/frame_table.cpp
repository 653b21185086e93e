#include "reduce/filters/frame_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace ovix::reduce {

void CFieldText::Append(const char* first, const char* last) {
    for (; first != last && length_ + 1 < kRoom; ++first) text_[length_++] = static_cast<wchar_t>(*first);
    text_[length_] = 0;
}

CFieldText& CFieldText::Add(const wchar_t* text) {
    for (; *text && length_ + 1 < kRoom; ++text) text_[length_++] = *text;
    text_[length_] = 0;
    return *this;
}

namespace {

/// Digits of a number, with zeros ahead up to a width.
template <int kBase>
struct TDigits {
    static constexpr u32 kMost = 24;

    TDigits(u64 value, u32 width) {
        char* end = std::to_chars(text, text + kMost, value, kBase).ptr;
        const u32 length = static_cast<u32>(end - text);
        const u32 zeros = std::min(width, kMost) > length ? std::min(width, kMost) - length : 0;
        std::copy_backward(text, end, end + zeros);
        std::fill_n(text, zeros, '0');
        last = end + zeros;
        if constexpr (kBase == 16) {
            for (char* p = text; p != last; ++p) *p = *p >= 'a' ? static_cast<char>(*p - 'a' + 'A') : *p;
        }
    }

    char text[kMost];
    char* last;
};

}  // namespace

CFieldText& CFieldText::AddDecimal(u64 value, u32 width) {
    const TDigits<10> digits(value, width);
    Append(digits.text, digits.last);
    return *this;
}

CFieldText& CFieldText::AddDecimal(i64 value) {
    if (value >= 0) return AddDecimal(static_cast<u64>(value));
    return Add(L"-").AddDecimal(u64{0} - static_cast<u64>(value));
}

CFieldText& CFieldText::AddHex(u64 value, u32 width) {
    const TDigits<16> digits(value, width);
    Append(digits.text, digits.last);
    return *this;
}

CFieldText& CFieldText::AddFixed(double value, int decimals) {
    char text[kRoom];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    if (end.ec == std::errc()) Append(text, end.ptr);
    return *this;
}

CFieldText& CFieldText::AddShortest(float value) {
    if (std::isnan(value)) return Add(L"nan");  // whatever its sign
    char text[64];
    Append(text, std::to_chars(text, text + sizeof text, value).ptr);
    return *this;
}

CFrameValues::~CFrameValues() { extra_.CutTo(count_); }

void CFrameValues::Add(const STableField& field, const u8* block) {
    CFieldText text;
    field.text(text, block + field.offset);
    if (extra_.Put(count_, field.name, text.c_str(), field.kind.kind, field.kind.format)) ++count_;
}

void DescribeField(TArray<SFrameField>& fields, const STableField& field, const u8* block, u64 blockOffset) {
    CFieldText text;
    field.text(text, block + field.offset);
    if (*field.unit) text.Add(L" ").Add(field.unit);
    fields.Add({blockOffset + field.offset, field.size, field.name, text.c_str()});
}

}  // namespace ovix::reduce
