#pragma once

#include "core/string.h"

namespace ovix {

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

}  // namespace ovix
