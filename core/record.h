#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <iterator>
#include <span>
#include <type_traits>

#include "core/date_time.h"
#include "core/file.h"
#include "core/stored_layout.h"

/// Stored records, described once: a table of (offset, field) from which an object is both read and written. All
/// numbers are little-endian and nothing is aligned.
///
///     constexpr TRecordField<CFov> kFields[] = {Field<&CFov::IHFOV>(8), Field<&CFov::IVFOV>(16)};
///     static_assert(RecordEnd(kFields) == 24);
///
/// Fields that have names make the table a layout for others, too: `kLayoutOf<kFields>`.
namespace ovix {

template <class T>
struct TRecordField : SStoredField {
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

template <class V>
V* FirstOf(V& value) {
    return &value;
}
template <class V, std::size_t N>
V* FirstOf(V (&values)[N]) {
    return values;
}

/// How a value of type V stands in a record.
template <class V>
struct TStored {
    static void Load(V& value, const u8* bytes) { value = LoadLittle<V>(bytes); }
    static void Save(const V& value, u8* bytes) { StoreLittle(bytes, value); }
    static constexpr u32 kSize = sizeof(V);
    static constexpr EStored kKind = std::is_floating_point_v<V> ? EStored::Real
                                     : std::is_signed_v<V>       ? EStored::Signed
                                                                 : EStored::Number;
};
template <>
struct TStored<bool> {
    static void Load(bool& value, const u8* bytes) { value = *bytes != 0; }
    static void Save(const bool& value, u8* bytes) { *bytes = value ? 1 : 0; }
    static constexpr u32 kSize = 1;
    static constexpr EStored kKind = EStored::Flag;
};
template <>
struct TStored<GUID> {
    static void Load(GUID& value, const u8* bytes) { value = LoadGuid(bytes); }
    static void Save(const GUID& value, u8* bytes) { StoreGuid(bytes, value); }
    static constexpr u32 kSize = 16;
    static constexpr EStored kKind = EStored::Id;
};
template <>
struct TStored<CDateTime> {
    static void Load(CDateTime& value, const u8* bytes) { value.SetTimestamp(LoadLittle<i64>(bytes)); }
    static void Save(const CDateTime& value, u8* bytes) { StoreLittle(bytes, value.GetTimestamp()); }
    static constexpr u32 kSize = 8;
    static constexpr EStored kKind = EStored::Time;
};
/// Elements stand one behind the other.
template <class V, std::size_t N>
struct TStored<V[N]> {
    using Element = TStored<V>;
    static void Load(V (&values)[N], const u8* bytes) {
        for (std::size_t i = 0; i < N; ++i) Element::Load(values[i], bytes + i * Element::kSize);
    }
    static void Save(const V (&values)[N], u8* bytes) {
        for (std::size_t i = 0; i < N; ++i) Element::Save(values[i], bytes + i * Element::kSize);
    }
    static constexpr u32 kSize = N * Element::kSize;
    static constexpr EStored kKind = EStored::Bytes;
};

}  // namespace detail

/// A field in its natural width, which reads as its type does unless another kind is given.
template <auto kMember>
constexpr auto Field(u32 offset, const char* name = "",
                     EStored kind = detail::TStored<typename detail::TMember<decltype(kMember)>::Value>::kKind) {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    using Stored = detail::TStored<typename detail::TMember<decltype(kMember)>::Value>;
    return TRecordField<Object>{{.offset = offset, .size = Stored::kSize, .name = name, .kind = kind},
                                [](Object& object, const u8* bytes) { Stored::Load(object.*kMember, bytes); },
                                [](const Object& object, u8* bytes) { Stored::Save(object.*kMember, bytes); }};
}

/// A number or an enumeration of which only the low byte is stored.
template <auto kMember>
constexpr auto ByteField(u32 offset, const char* name = "") {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    using Value = typename detail::TMember<decltype(kMember)>::Value;
    return TRecordField<Object>{{.offset = offset, .size = 1, .name = name, .kind = EStored::Number},
                                [](Object& object, const u8* bytes) { object.*kMember = static_cast<Value>(*bytes); },
                                [](const Object& object, u8* bytes) { *bytes = static_cast<u8>(object.*kMember); }};
}

/// A `CString` in `kWidth` bytes of UTF-8, filled with zeros; a longer text is cut and has no terminator.
template <auto kMember, u32 kWidth>
constexpr auto TextField(u32 offset, const char* name = "") {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    return TRecordField<Object>{{.offset = offset, .size = kWidth, .name = name, .kind = EStored::Text},
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

/// An array of characters with room for a terminator, which is not stored.
template <auto kMember>
constexpr auto CharsField(u32 offset, const char* name = "") {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    constexpr u32 kWidth = sizeof(typename detail::TMember<decltype(kMember)>::Value) - 1;
    return TRecordField<Object>{{.offset = offset, .size = kWidth, .name = name, .kind = EStored::Text},
                                [](Object& object, const u8* bytes) {
                                    std::memcpy(object.*kMember, bytes, kWidth);
                                    (object.*kMember)[kWidth] = 0;
                                },
                                [](const Object& object, u8* bytes) {
                                    std::memset(bytes, 0, kWidth);
                                    std::memcpy(bytes, object.*kMember, ::strnlen(object.*kMember, kWidth));
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

/// Whether each field begins where the one before it ends.
template <class T, std::size_t N>
constexpr bool IsGapless(const TRecordField<T> (&fields)[N]) {
    for (std::size_t i = 1; i < N; ++i) {
        if (fields[i].offset != fields[i - 1].offset + fields[i - 1].size) return false;
    }
    return true;
}

namespace detail {

template <const auto& kFields>
constexpr auto Sliced() {
    std::array<SStoredField, std::size(kFields)> layout;
    for (std::size_t i = 0; i < layout.size(); ++i) layout[i] = static_cast<const SStoredField&>(kFields[i]);
    return layout;
}

}  // namespace detail

/// A table as a `StoredLayout`.
template <const auto& kFields>
inline constexpr auto kLayoutOf = detail::Sliced<kFields>();

/// A member that is a structure with a table of its own, or an array of such structures, one every `kStride` bytes.
template <auto kMember, const auto& kFields, u32 kStride = RecordEnd(kFields)>
constexpr auto SubRecords(u32 offset, const char* name = "") {
    using Object = typename detail::TMember<decltype(kMember)>::Object;
    using Value = typename detail::TMember<decltype(kMember)>::Value;
    static_assert(RecordEnd(kFields) <= kStride);
    constexpr u32 kCount = std::is_array_v<Value> ? std::extent_v<Value> : 1;
    return TRecordField<Object>{
        {.offset = offset, .size = kCount * kStride, .name = name, .parts = kLayoutOf<kFields>, .count = kCount},
        [](Object& object, const u8* bytes) {
            auto* part = detail::FirstOf(object.*kMember);
            for (u32 i = 0; i < kCount; ++i) LoadRecord(part[i], kFields, bytes + i * kStride);
        },
        [](const Object& object, u8* bytes) {
            const auto* part = detail::FirstOf(object.*kMember);
            for (u32 i = 0; i < kCount; ++i) SaveRecord(part[i], kFields, bytes + i * kStride);
        }};
}

/// Reads a record that begins with its size and its version, 32 bits each. False when the file does not hold it, when
/// its size field says otherwise, or when its version is not below `versionLimit`.
OVIX_API bool ReadRecord(IFile& file, std::span<u8> record, u32 versionLimit);
/// All zeros behind the size and the version.
OVIX_API void StartRecord(std::span<u8> record, u32 version);

/// An object's whole record of `kSize` bytes, described by one table. What the file does not hold as `ReadRecord` wants
/// it leaves the object as it was.
template <const auto& kFields, u32 kSize, class T>
bool LoadWholeRecord(IFile& file, T& object, u32 versionLimit) {
    static_assert(RecordEnd(kFields) <= kSize);
    u8 record[kSize];
    if (!ReadRecord(file, record, versionLimit)) return false;
    LoadRecord(object, kFields, record);
    return true;
}
template <const auto& kFields, u32 kSize, class T>
bool SaveWholeRecord(IFile& file, const T& object) {
    static_assert(RecordEnd(kFields) <= kSize);
    u8 record[kSize];
    StartRecord(record, object.version);
    SaveRecord(object, kFields, record);
    return file.WriteBytes(record, kSize);
}

/// Reads, or writes, what a table without gaps lists, one field after the other from the current position on. Both stop
/// at the first failure, and what was read so far stays.
template <const auto& kFields, class T>
bool ReadFields(IFile& file, T& object) {
    u8 bytes[RecordEnd(kFields)];
    for (const TRecordField<T>& field : kFields) {
        if (!file.ReadBytes(bytes, field.size)) return false;
        field.load(object, bytes);
    }
    return true;
}
template <const auto& kFields, class T>
bool WriteFields(IFile& file, const T& object) {
    u8 bytes[RecordEnd(kFields)];
    for (const TRecordField<T>& field : kFields) {
        field.save(object, bytes);
        if (!file.WriteBytes(bytes, field.size)) return false;
    }
    return true;
}

/// One value of a stream in its natural width; a string as `IFile` keeps it.
template <class V>
bool ReadValue(IFile& file, V& value) {
    if constexpr (std::is_same_v<V, CString>) {
        return file.GetString(value);
    } else {
        u8 bytes[detail::TStored<V>::kSize];
        if (!file.ReadBytes(bytes, sizeof bytes)) return false;
        detail::TStored<V>::Load(value, bytes);
        return true;
    }
}
template <class V>
bool WriteValue(IFile& file, const V& value) {
    u8 bytes[detail::TStored<V>::kSize];
    detail::TStored<V>::Save(value, bytes);
    return file.WriteBytes(bytes, sizeof bytes);
}
/// A number or an enumeration of which a stream keeps one byte.
template <class V>
bool ReadByte(IFile& file, V& value) {
    u8 byte = 0;
    if (!file.GetUInt8(byte)) return false;
    value = static_cast<V>(byte);
    return true;
}

/// A table of `count` numbers, straight into its place: a little-endian machine has nothing to do to them. Its length
/// is the caller's to hold against what remains in the file.
template <Number V>
bool ReadTable(IFile& file, V* table, u64 count) {
    constexpr u32 kMostAtOnce = 1 << 24;
    while (count) {
        const u32 n = static_cast<u32>(std::min<u64>(count, kMostAtOnce));
        if (!file.ReadBytes(table, n * static_cast<u32>(sizeof(V)))) return false;
        if constexpr (std::endian::native != std::endian::little) {
            for (u32 i = 0; i < n; ++i) table[i] = LoadLittle<V>(reinterpret_cast<const u8*>(table + i));
        }
        table += n;
        count -= n;
    }
    return true;
}
template <Number V>
bool WriteTable(IFile& file, const V* table, u64 count) {
    u8 bytes[4096 * sizeof(V)];
    while (count) {
        const u32 n = static_cast<u32>(std::min<u64>(count, 4096));
        for (u32 i = 0; i < n; ++i) StoreLittle(bytes + i * sizeof(V), table[i]);
        if (!file.WriteBytes(bytes, n * static_cast<u32>(sizeof(V)))) return false;
        table += n;
        count -= n;
    }
    return true;
}

/// Members that go through a file one behind the other: the oldest stored forms. Both directions stop at the first
/// failure, and what was read so far stays.
///
///     using Stream = TMemberStream<&CFov::IHFOV, &CFov::IVFOV>;
///     return Stream::Read(*file, *this);
template <auto... kMembers>
struct TMemberStream {
    template <class Object>
    static bool Read(IFile& file, Object& object) {
        return (ReadValue(file, object.*kMembers) && ...);
    }
    template <class Object>
    static bool Write(IFile& file, const Object& object) {
        return (WriteValue(file, object.*kMembers) && ...);
    }
    /// Bytes of all members; there is no such number with strings among them.
    static constexpr u32 Size() {
        return (0 + ... + detail::TStored<typename detail::TMember<decltype(kMembers)>::Value>::kSize);
    }
};

}  // namespace ovix
