#pragma once

#include "core/bytes.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/objects/frame_info_reduce_object.h"

/// The fields of a header, a trailer or a record as one table, line by line as a data sheet lists them. From it come
/// the values that `ParseFrame` shows beside a frame, the description of the frame's bytes, and what goes to the
/// members of an object:
///
///     constexpr STableField kFields[] = {
///         {20, 4, L"FrameCounter", frame_values::kCounter, DecimalText<LoadLittle<u32>>},
///         {12, 2, L"ChassisTemp", frame_values::kFloat, FixedText<Celsius, 2>, L"°C"},
///     };
namespace ovix::reduce {

/// The text of one value. It stands on the stack: a frame has dozens of values, and most are the same as in the frame
/// before. What is beyond its room, which no number is, is cut off.
class OVIX_REDUCE_API CFieldText {
  public:
    CFieldText() { text_[0] = 0; }

    const wchar_t* c_str() const { return text_; }

    // Each goes behind what is there already.
    CFieldText& Add(const wchar_t* text);
    /// With zeros ahead up to `width` digits.
    CFieldText& AddDecimal(u64 value, u32 width = 0);
    CFieldText& AddDecimal(i64 value);
    CFieldText& AddHex(u64 value, u32 width);
    /// As "%f" with so many decimals.
    CFieldText& AddFixed(double value, int decimals);
    /// The fewest digits that read back to the same number.
    CFieldText& AddShortest(float value);

  private:
    static constexpr u32 kRoom = 336;  // the largest number with 6 decimals takes 317

    void Append(const char* first, const char* last);

    wchar_t text_[kRoom];
    u32 length_ = 0;
};

/// What a value is: two words that stand in `unit` and `type` of its entry.
struct SValueKind {
    const wchar_t* kind;
    const wchar_t* format;
    bool isFlag = false;

    bool IsShown() const { return kind != nullptr; }
};

namespace frame_values {
inline constexpr SValueKind kCounter{L"Counter", L"int"};
inline constexpr SValueKind kInteger{L"Integer", L"int"};
inline constexpr SValueKind kFloat{L"Float", L"float"};
inline constexpr SValueKind kFlag{L"Flag", L"ascii", true};
inline constexpr SValueKind kText{L"Text", L"ascii"};
inline constexpr SValueKind kBitfield{L"Bitfield", L"int"};
}  // namespace frame_values

/// Of fields that the list of values leaves out, as the parts of a time, which has a row of its own.
inline constexpr SValueKind kDescribedOnly{nullptr, nullptr};

/// One field.
struct STableField {
    u32 offset;  ///< of the first byte that it touches, from the start of the header, trailer or record
    u32 size;    ///< of all bytes that it touches
    const wchar_t* name;
    SValueKind kind;
    void (*text)(CFieldText& text, const u8* bytes);  ///< `bytes` begin at the offset
    const wchar_t* unit = L"";  ///< behind the value in the description; the list of values has no place for it
    u8 variants = 0xFF;         ///< of a header, as bits of the family's own; the others do not have the field
};

/// One field whose value goes to a member of `Object`, too.
template <class Object>
struct TKeptField : STableField {
    void (*load)(Object& object, const u8* bytes) = nullptr;
};

// The forms of text. `kDecode` makes the value of the bytes.
template <auto kDecode>
void DecimalText(CFieldText& text, const u8* bytes) {
    const auto value = kDecode(bytes);
    if constexpr (std::is_signed_v<decltype(value)>) {
        text.AddDecimal(i64{value});
    } else {
        text.AddDecimal(u64{value});
    }
}
template <auto kDecode, u32 kDigits>
void HexText(CFieldText& text, const u8* bytes) {
    text.Add(L"0x").AddHex(kDecode(bytes), kDigits);
}
template <auto kDecode, int kDecimals>
void FixedText(CFieldText& text, const u8* bytes) {
    text.AddFixed(static_cast<double>(kDecode(bytes)), kDecimals);
}
template <auto kDecode>
void FlagText(CFieldText& text, const u8* bytes) {
    text.Add(kDecode(bytes) != 0 ? L"T" : L"F");
}
/// By the type of the value.
template <auto kDecode>
void PlainText(CFieldText& text, const u8* bytes) {
    if constexpr (std::is_floating_point_v<decltype(kDecode(bytes))>) {
        text.AddShortest(kDecode(bytes));
    } else {
        DecimalText<kDecode>(text, bytes);
    }
}

/// The member `kMember`, or the element `kIndex` of one that is an array.
template <auto kMember, u32 kIndex, class Object>
constexpr auto& MemberOf(Object& object) {
    auto& member = object.*kMember;
    if constexpr (std::is_array_v<std::remove_reference_t<decltype(member)>>) {
        return member[kIndex];
    } else {
        return member;
    }
}
template <class M>
struct TObjectOf;
template <class Object, class Value>
struct TObjectOf<Value Object::*> {
    using Type = Object;
};

/// A field of which `kDecode` makes the value of a member, with the text that goes with its type and kind.
template <auto kDecode, auto kMember, u32 kIndex = 0>
constexpr auto Decoded(u32 offset, u32 size, const wchar_t* name, SValueKind kind = kDescribedOnly,
                       const wchar_t* unit = L"", u8 variants = 0xFF) {
    using Object = typename TObjectOf<decltype(kMember)>::Type;
    return TKeptField<Object>{
        {offset, size, name, kind, kind.isFlag ? FlagText<kDecode> : PlainText<kDecode>, unit, variants},
        [](Object& object, const u8* bytes) { MemberOf<kMember, kIndex>(object) = kDecode(bytes); }};
}
/// A little-endian number that goes to a member as it stands.
template <class Stored, auto kMember, u32 kIndex = 0>
constexpr auto Number(u32 offset, const wchar_t* name, SValueKind kind = kDescribedOnly, const wchar_t* unit = L"",
                      u8 variants = 0xFF) {
    return Decoded<LoadLittle<Stored>, kMember, kIndex>(offset, sizeof(Stored), name, kind, unit, variants);
}

/// The byte offset of a word of 16 bits, or the bytes of so many words.
constexpr u32 Word(u32 index) { return 2 * index; }

/// Bits `kFirst` to `kLast` of a little-endian word of 16 bits.
template <u32 kFirst, u32 kLast = kFirst>
constexpr u32 WordBits(const u8* bytes) {
    static_assert(kFirst <= kLast && kLast < 16);
    return LoadLittle<u16>(bytes) >> kFirst & ((1u << (kLast - kFirst + 1)) - 1);
}

/// The values of one frame: takes the place of what `extra` holds, field by field, and drops the rest at its end. Texts
/// that stay from one frame to the next are not touched. No name may come twice, and none be a reserved one.
class OVIX_REDUCE_API CFrameValues {
  public:
    explicit CFrameValues(CFrameInfoExtra& extra) : extra_(extra) {}
    CFrameValues(const CFrameValues&) = delete;
    CFrameValues& operator=(const CFrameValues&) = delete;
    ~CFrameValues();

    /// All fields of a table that have a kind, for one of the variants. `block` is the header, trailer or record.
    template <class Fields>
    void Add(const Fields& fields, const u8* block, u8 variants = 0xFF) {
        for (const STableField& field : fields) {
            if (field.kind.IsShown() && (field.variants & variants)) Add(field, block);
        }
    }

  private:
    void Add(const STableField& field, const u8* block);

    CFrameInfoExtra& extra_;
    u32 count_ = 0;
};

/// What a decoder sets of every frame beside its values; the time is left to it.
inline void StartFrame(CFrameInfoReduceObject& info, u8 preset, u64 frameNumber) {
    info.frameFilled = true;
    info.preset = preset;
    info.frameNumber = frameNumber;
}

/// Describes the field with its unit; the block stands at `blockOffset` in the frame.
OVIX_REDUCE_API void DescribeField(TArray<SFrameField>& fields, const STableField& field, const u8* block,
                                   u64 blockOffset);
/// The same for all fields of a table that one of the variants has.
template <class Fields>
void DescribeFields(TArray<SFrameField>& described, const Fields& fields, const u8* block, u64 blockOffset = 0,
                    u8 variants = 0xFF) {
    for (const STableField& field : fields) {
        if (field.variants & variants) DescribeField(described, field, block, blockOffset);
    }
}

/// Gives the members of an object their values.
template <class Object, class Fields>
void LoadFields(Object& object, const Fields& fields, const u8* block, u8 variants = 0xFF) {
    for (const TKeptField<Object>& field : fields) {
        if (field.load && (field.variants & variants)) field.load(object, block + field.offset);
    }
}

/// Where the last field ends; a `static_assert` on it keeps table and size in step.
template <class Fields>
constexpr u32 EndOf(const Fields& fields) {
    u32 end = 0;
    for (const STableField& field : fields) end = field.offset + field.size > end ? field.offset + field.size : end;
    return end;
}

}  // namespace ovix::reduce
