#pragma once

#include <atomic>
#include <concepts>
#include <string>
#include <type_traits>

#include "core/types.h"

namespace ovix {

/// A class that reads as a wide text.
template <class T>
concept WideText = std::is_class_v<T> && std::convertible_to<const T&, const wchar_t*>;

/// A wide string value. It may be moved bytewise. Narrow text is UTF-8; bytes that are not valid become U+FFFD.
/// Where case is ignored, it is that of the 26 Latin letters.
class OVIX_API CString {
  public:
    CString() = default;
    /// A length of -1 means up to the terminator; a null text is empty.
    CString(const wchar_t* text, int length = -1);
    CString(const char* text, int length = -1);
    template <WideText T>
        requires(!std::derived_from<T, CString>)
    CString(const T& text) : CString(static_cast<const wchar_t*>(text)) {}
    CString(const CString& other);
    CString(CString&& other) noexcept;
    ~CString();
    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const wchar_t* text);
    template <WideText T>
        requires(!std::derived_from<T, CString>)
    CString& operator=(const T& text) {
        return *this = static_cast<const wchar_t*>(text);
    }

    /// Never null.
    operator const wchar_t*() const { return text_ ? text_ : L""; }
    const wchar_t* c_str() const { return *this; }
    int length() const { return static_cast<int>(length_); }
    bool IsEmpty() const { return length_ == 0; }

    /// A writable buffer of `size` characters that begins with the present text; `ReleaseBuffer` then fixes the length
    /// from the terminator.
    wchar_t* GetBuffer(int size);
    void ReleaseBuffer();

    /// The text in UTF-8, valid as long as this string is and is not changed. May be called from several threads.
    const char* GetUTF8() const;

    bool Equals(const wchar_t* other) const;
    bool EqualsNoCase(const wchar_t* other) const;
    bool EndsWithNoCase(const wchar_t* end) const;

    /// printf-style, with `%s` taking a wide string, `%S` a narrow one and `%I64d` a 64-bit number. Decimal points are
    /// points in every locale. A directive that makes no sense stands as it is written.
    static CString FromFormat(const wchar_t* format, ...);

    friend bool operator==(const CString& a, const CString& b) { return a.Equals(b); }
    friend bool operator==(const CString& a, const wchar_t* b) { return a.Equals(b); }
    template <WideText T>
        requires(!std::derived_from<T, CString>)
    friend bool operator==(const CString& a, const T& b) {
        return a.Equals(b);
    }

  private:
    void Assign(const wchar_t* text, std::size_t length);
    void DropUTF8();

    wchar_t* text_ = nullptr;
    u32 length_ = 0;
    mutable std::atomic<char*> utf8_ = nullptr;
};

OVIX_API CString operator+(const CString& a, const wchar_t* b);

/// A narrow string value: valid UTF-8, up to the first zero.
class OVIX_API CStringMB {
  public:
    CStringMB() = default;
    CStringMB(const wchar_t* text) : text_(text) {}

    /// A length of -1 means up to the terminator.
    void Copy(const char* text, int length = -1) { text_ = CString(text, length); }
    /// In bytes.
    int length() const { return static_cast<int>(std::char_traits<char>::length(c_str())); }
    const char* c_str() const { return text_.GetUTF8(); }
    operator const char*() const { return c_str(); }

  private:
    CString text_;
};

/// A Latin capital as its small letter, all else as it is.
constexpr wchar_t FoldCase(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

/// Equal but for the case of Latin letters.
OVIX_API bool EqualsNoCase(const wchar_t* a, const wchar_t* b);

/// Copies at most `size` bytes, the terminator included.
OVIX_API void StrCpy(char* dest, const char* source, int size);

/// Decimal texts of numbers; none depends on the locale.
struct OVIX_API CInt32 {
    static CString ToString(i32 value);
};
struct OVIX_API CUInt8 {
    static CString ToString(u8 value);
};
struct OVIX_API CUInt16 {
    static CString ToString(u16 value);
};
struct OVIX_API CUInt32 {
    static constexpr u32 Max = ~u32{0};
    static CString ToString(u32 value);
};
struct OVIX_API CUInt64 {
    static constexpr u64 Max = ~u64{0};
    static CString ToString(u64 value);
};
struct OVIX_API CFlt32 {
    /// The shortest text that reads back to the same float.
    static CString ToString(float value);
};

/// Decimal text of a number, cut to `size` characters with the terminator.
OVIX_API void ltotcs(i32 value, wchar_t* dest, std::size_t size);

/// Text read as a number: leading blanks, a sign, digits up to the first other character. Text without digits is 0,
/// numbers beyond 64 bits stop at the limit, and narrower results keep the low bits.
class OVIX_API CVariant {
  public:
    explicit CVariant(const wchar_t* text) : text_(text) {}

    i8 ToInt8() const;
    u64 ToUInt64() const;

  private:
    CString text_;
};

/// What `wcstol` and its kin make of a text, without the locale: 0 when it is no number.
OVIX_API i32 TextToInt32(const wchar_t* text);
OVIX_API i64 TextToInt64(const wchar_t* text);
OVIX_API double TextToDouble(const wchar_t* text);

namespace path {

/// The path with another extension, or with it appended where the file name has none. The extension may come without
/// its dot; an empty one takes the present one away.
OVIX_API CString ChangeExtension(const CString& path, const CString& extension);

}  // namespace path
}  // namespace ovix
