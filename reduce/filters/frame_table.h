#pragma once

#include "core/bytes.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/filters/frame_values.h"

/// The fields of a header or a trailer as one table, line by line as a data sheet lists them. From it come both the
/// values that `ParseFrame` shows beside a frame and the description of the frame's bytes.
namespace ovix::reduce {

/// One field.
struct STableField {
    u32 offset;  ///< of the first byte that it touches, from the start of the header or trailer
    u32 size;    ///< of all bytes that it touches
    const wchar_t* name;
    frame_values::SKind kind;  ///< `kToldOnly` for what stands in the description alone
    /// The value as text; `bytes` begin at the offset. `Shown` and `ShownFlag` make it from a function that decodes.
    CString (*text)(const u8* bytes, const wchar_t* format);
    const wchar_t* format = L"";
    const wchar_t* unit = L"";  ///< behind the value in the description; the list of values has no place for it
};

/// The kind of fields that the list of values leaves out, as the parts of a time, which has a row of its own.
inline constexpr frame_values::SKind kToldOnly{nullptr, nullptr};

/// The text of a field by its format.
template <auto kDecode>
CString Shown(const u8* bytes, const wchar_t* format) {
    return CString::FromFormat(format, kDecode(bytes));
}
/// "T" or "F".
template <auto kIsSet>
CString ShownFlag(const u8* bytes, const wchar_t*) {
    return frame_values::FlagText(kIsSet(bytes));
}

/// The byte offset of a word of 16 bits, or the bytes of so many words.
constexpr u32 Word(u32 index) { return 2 * index; }

/// Bits `kFirst` to `kLast` of a little-endian word of 16 bits.
template <u32 kFirst, u32 kLast = kFirst>
constexpr u32 WordBits(const u8* bytes) {
    static_assert(kFirst <= kLast && kLast < 16);
    return LoadLittle<u16>(bytes) >> kFirst & ((1u << (kLast - kFirst + 1)) - 1);
}

/// Adds the field to the values of a frame, as its table tells it. `block` is the header or trailer.
inline void AddField(CFrameInfoExtra& extra, const STableField& field, const u8* block) {
    if (field.kind.kind)
        frame_values::Add(extra, field.name, field.kind, field.text(block + field.offset, field.format));
}

/// Tells the field with its unit; the block stands at `blockOffset` in the frame.
inline void DescribeField(TArray<SFrameField>& fields, const STableField& field, const u8* block, u64 blockOffset = 0) {
    CString value = field.text(block + field.offset, field.format);
    if (*field.unit) value = CString::FromFormat(L"%s %s", value.c_str(), field.unit);
    fields.Add({blockOffset + field.offset, field.size, field.name, value});
}

// The same for all fields of a table.
template <std::size_t N>
void AddFields(CFrameInfoExtra& extra, const STableField (&table)[N], const u8* block) {
    for (const STableField& field : table) AddField(extra, field, block);
}
template <std::size_t N>
void DescribeFields(TArray<SFrameField>& fields, const STableField (&table)[N], const u8* block, u64 blockOffset = 0) {
    for (const STableField& field : table) DescribeField(fields, field, block, blockOffset);
}

}  // namespace ovix::reduce
