#include "core/string.h"

#include <locale.h>
#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "core/process.h"

namespace ovix {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void* AllocOrThrow(std::size_t size) {
    void* memory = Alloc(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

std::wstring Widen(const char* text, std::size_t length) {
    std::string valid;
    valid.reserve(length);
    utf8::replace_invalid(text, text + length, std::back_inserter(valid), kReplacement);
    std::wstring wide;
    wide.reserve(length);
    utf8::unchecked::utf8to32(valid.begin(), valid.end(), std::back_inserter(wide));
    return wide;
}

std::string Narrow(const wchar_t* text, std::size_t length) {
    std::string narrow;
    narrow.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        const auto code = static_cast<char32_t>(text[i]);
        utf8::append(utf8::internal::is_code_point_valid(code) ? code : kReplacement, std::back_inserter(narrow));
    }
    return narrow;
}

/// The directives as the C library here wants them: wide `%s`, no `I64`. What is no directive is doubled, so that it
/// prints as it stands and takes no argument.
std::wstring ToNativeFormat(const wchar_t* format) {
    std::wstring native;
    for (const wchar_t* p = format; *p;) {
        if (*p != L'%') {
            native += *p++;
            continue;
        }
        const std::size_t flags = 1 + std::wcsspn(p + 1, L"-+ #0123456789.*");
        const wchar_t* kind = p + flags;
        const bool is64Bit = std::wcsncmp(kind, L"I64", 3) == 0;
        std::wstring length(is64Bit ? L"ll" : L"");
        if (is64Bit) kind += 3;
        while (*kind && std::wcschr(L"hlz", *kind)) length += *kind++;
        if (!*kind || !std::wcschr(L"%cdiouxXeEfFgGaApsS", *kind)) {
            native += L"%%";
            ++p;
            continue;
        }
        if (*kind == L's' && length.empty()) length = L"l";
        native.append(p, flags) += length;
        native += *kind == L'S' ? L's' : *kind;
        p = kind + 1;
    }
    return native;
}

locale_t Neutral() {
    // Narrow arguments are UTF-8; where the C library lacks that locale, they are ASCII.
    static const locale_t utf8 = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    static const locale_t neutral = utf8 ? utf8 : newlocale(LC_ALL_MASK, "C", nullptr);
    return neutral;
}

/// The calling thread formats in the "C" locale while this lives.
class CNeutralLocale {
  public:
    CNeutralLocale() : before_(uselocale(Neutral())) {}
    CNeutralLocale(const CNeutralLocale&) = delete;
    CNeutralLocale& operator=(const CNeutralLocale&) = delete;
    ~CNeutralLocale() { uselocale(before_); }

  private:
    locale_t before_;
};

}  // namespace

CString::CString(const wchar_t* text, int length) {
    if (text) Assign(text, length < 0 ? std::wcslen(text) : static_cast<std::size_t>(length));
}
CString::CString(const char* text, int length) {
    if (!text) return;
    const std::wstring wide =
        Widen(text, length < 0 ? std::char_traits<char>::length(text) : static_cast<std::size_t>(length));
    Assign(wide.data(), wide.size());
}
CString::CString(const CString& other) { Assign(other, other.length_); }
CString::CString(CString&& other) noexcept
    : text_(std::exchange(other.text_, nullptr)),
      length_(std::exchange(other.length_, 0)),
      utf8_(other.utf8_.exchange(nullptr)) {}
CString::~CString() {
    Free(text_);
    DropUTF8();
}
CString& CString::operator=(const CString& other) {
    if (this != &other) Assign(other, other.length_);
    return *this;
}
CString& CString::operator=(CString&& other) noexcept {
    std::swap(text_, other.text_);
    std::swap(length_, other.length_);
    utf8_ = other.utf8_.exchange(utf8_);
    return *this;
}
CString& CString::operator=(const wchar_t* text) {
    Assign(text ? text : L"", text ? std::wcslen(text) : 0);
    return *this;
}

void CString::Assign(const wchar_t* text, std::size_t length) {
    wchar_t* copy = nullptr;
    if (length) {
        copy = static_cast<wchar_t*>(AllocOrThrow((length + 1) * sizeof(wchar_t)));
        std::wmemcpy(copy, text, length);
        copy[length] = 0;
    }
    Free(text_);
    text_ = copy;
    length_ = static_cast<u32>(length);
    DropUTF8();
}

void CString::DropUTF8() { Free(utf8_.exchange(nullptr)); }

wchar_t* CString::GetBuffer(int size) {
    const std::size_t room = size < 0 ? 0 : static_cast<std::size_t>(size);
    auto* buffer = static_cast<wchar_t*>(AllocOrThrow((room + 1) * sizeof(wchar_t)));
    std::wmemset(buffer, 0, room + 1);
    std::wmemcpy(buffer, *this, length_ < room ? length_ : room);
    Free(text_);
    text_ = buffer;
    if (length_ > room) length_ = static_cast<u32>(room);
    DropUTF8();
    return text_;
}

void CString::ReleaseBuffer() {
    length_ = text_ ? static_cast<u32>(std::wcslen(text_)) : 0;
    DropUTF8();
}

const char* CString::GetUTF8() const {
    if (!length_) return "";
    if (const char* ready = utf8_.load(std::memory_order_acquire)) return ready;
    const std::string narrow = Narrow(text_, length_);
    auto* made = static_cast<char*>(AllocOrThrow(narrow.size() + 1));
    std::char_traits<char>::copy(made, narrow.c_str(), narrow.size() + 1);
    char* present = nullptr;
    if (utf8_.compare_exchange_strong(present, made)) return made;
    Free(made);  // another thread was first
    return present;
}

bool CString::Equals(const wchar_t* other) const { return std::wcscmp(*this, other) == 0; }
bool CString::EqualsNoCase(const wchar_t* other) const { return ovix::EqualsNoCase(*this, other); }
bool CString::EndsWithNoCase(const wchar_t* end) const {
    const std::size_t n = std::wcslen(end);
    return n <= length_ && ovix::EqualsNoCase(c_str() + (length_ - n), end);
}

CString CString::FromFormat(const wchar_t* format, ...) {
    const CNeutralLocale neutral;
    wchar_t* text = nullptr;
    std::size_t length = 0;
    std::FILE* stream = ::open_wmemstream(&text, &length);
    if (!stream) throw std::bad_alloc();
    std::va_list arguments;
    va_start(arguments, format);
    std::vfwprintf(stream, ToNativeFormat(format).c_str(), arguments);
    va_end(arguments);
    std::fclose(stream);
    CString formatted(text, static_cast<int>(length));
    std::free(text);
    return formatted;
}

CString operator+(const CString& a, const wchar_t* b) {
    std::wstring joined(a.c_str(), static_cast<std::size_t>(a.length()));
    joined += b;
    return CString(joined.data(), static_cast<int>(joined.size()));
}

bool EqualsNoCase(const wchar_t* a, const wchar_t* b) {
    for (; FoldCase(*a) == FoldCase(*b); ++a, ++b) {
        if (!*a) return true;
    }
    return false;
}

void StrCpy(char* dest, const char* source, int size) {
    if (size <= 0) return;
    int i = 0;
    for (; i < size - 1 && source[i]; ++i) dest[i] = source[i];
    dest[i] = 0;
}

template <class T>
static CString Shortest(T value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return CString(text, static_cast<int>(end - text));
}

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

namespace path {

CString ChangeExtension(const CString& path, const CString& extension) {
    std::wstring text(path.c_str(), static_cast<std::size_t>(path.length()));
    const std::size_t dot = text.rfind(L'.');
    const std::size_t slash = text.find_last_of(L"/\\");
    if (dot != std::wstring::npos && (slash == std::wstring::npos || dot > slash)) text.resize(dot);
    if (!extension.IsEmpty() && *extension.c_str() != L'.') text += L'.';
    return CString(text.c_str()) + extension;
}

}  // namespace path
}  // namespace ovix
