#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "core/bytes.h"
#include "core/date_time.h"

/// Stored records, described once: a table of (offset, field) from which an object is both read and written. All
/// numbers are little-endian and nothing is aligned.
///
///     constexpr TRecordField<CFov> kFields[] = {Field<&CFov::IHFOV>(8), Field<&CFov::IVFOV>(16)};
///     static_assert(RecordEnd(kFields) == 24);
namespace ovix {

template <class T>
struct TRecordField {
    u32 offset;
    u32 size;
    void (*load)(T& object, const u8* bytes);
    void (*save)(const T& object, u8* bytes);
};

namespace detail {

template <class M>
struct TMember;
template <class T, class V>
struct TMember<V T::*> {
    using Object = T;
    using Value = V;
};

/// How a value of type V stands in a record.
template <class V>
struct TStored {
    static void Load(V& value, const u8* bytes) { value = LoadLittle<V>(bytes); }
    static void Save(const V& value, u8* bytes) { StoreLittle(bytes, value); }
    static constexpr u32 kSize = sizeof(V);
};
template <>
struct TStored<bool> {
    static void Load(bool& value, const u8* bytes) { value = *bytes != 0; }
    static void Save(const bool& value, u8* bytes) { *bytes = value ? 1 : 0; }
    static constexpr u32 kSize = 1;
};
template <>
struct TStored<GUID> {
    static void Load(GUID& value, const u8* bytes) { value = LoadGuid(bytes); }
    static void Save(const GUID& value, u8* bytes) { StoreGuid(bytes, value); }
    static constexpr u32 kSize = 16;
};
template <>
struct TStored<CDateTime> {
    static void Load(CDateTime& value, const u8* bytes) { value.SetTimestamp(LoadLittle<i64>(bytes)); }
    static void Save(const CDateTime& value, u8* bytes) { StoreLittle(bytes, value.GetTimestamp()); }
    static constexpr u32 kSize = 8;
};

}  // namespace detail

/// A field in its natural width.
template <auto kMember>
constexpr auto Field(u32 offset) {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    using Stored = detail::TStored<typename detail::TMember<decltype(kMember)>::Value>;
    return TRecordField<Object>{offset, Stored::kSize,
                                [](Object& object, const u8* bytes) { Stored::Load(object.*kMember, bytes); },
                                [](const Object& object, u8* bytes) { Stored::Save(object.*kMember, bytes); }};
}

/// A number or an enumeration of which only the low byte is stored.
template <auto kMember>
constexpr auto ByteField(u32 offset) {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    using Value = typename detail::TMember<decltype(kMember)>::Value;
    return TRecordField<Object>{offset, 1,
                                [](Object& object, const u8* bytes) { object.*kMember = static_cast<Value>(*bytes); },
                                [](const Object& object, u8* bytes) { *bytes = static_cast<u8>(object.*kMember); }};
}

/// A `CString` in `kWidth` bytes of UTF-8, filled with zeros; a longer text is cut and has no terminator.
template <auto kMember, u32 kWidth>
constexpr auto TextField(u32 offset) {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    return TRecordField<Object>{offset, kWidth,
                                [](Object& object, const u8* bytes) {
                                    const auto* text = reinterpret_cast<const char*>(bytes);
                                    object.*kMember = CString(text, static_cast<int>(::strnlen(text, kWidth)));
                                },
                                [](const Object& object, u8* bytes) {
                                    const CStringMB text(object.*kMember);
                                    std::memset(bytes, 0, kWidth);
                                    std::memcpy(bytes, text.c_str(), std::min(kWidth, static_cast<u32>(text.length())));
                                }};
}

template <class T, std::size_t N>
void LoadRecord(T& object, const TRecordField<T> (&fields)[N], const u8* record) {
    for (const TRecordField<T>& field : fields) field.load(object, record + field.offset);
}
template <class T, std::size_t N>
void SaveRecord(const T& object, const TRecordField<T> (&fields)[N], u8* record) {
    for (const TRecordField<T>& field : fields) field.save(object, record + field.offset);
}

/// Where the last field ends; a `static_assert` on it keeps table and size in step.
template <class T, std::size_t N>
constexpr u32 RecordEnd(const TRecordField<T> (&fields)[N]) {
    u32 end = 0;
    for (const TRecordField<T>& field : fields) {
        if (field.offset + field.size > end) end = field.offset + field.size;
    }
    return end;
}

}  // namespace ovix
