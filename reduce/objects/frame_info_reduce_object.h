#pragma once

#include <concepts>
#include <utility>

#include "core/array.h"
#include "core/date_time.h"
#include "core/string.h"
#include "reduce/api.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

struct SFrameInfoExtraEntry {
    CString name;    ///< without regard to case; the first match wins
    CString value;   ///< as text
    CString unit;    ///< decoders store a word for the kind here: "Counter", "Float", ...
    CString type;    ///< decoders store a word for the format here: "int", "float", "ascii"
    CString class_;  ///< a free word for grouping; the underscore keeps it apart from the C++ keyword
};

/// The named values of a frame in text form, in order of insertion, which is also the order of display.
///
/// "Time", "FrameNumber" and "Preset" are reserved in any case of letters, as `CFrameInfoReduceObject` shows these from
/// fields of its own: whatever would add or change an entry of such a name does nothing. Lookups are linear. Names and
/// texts that are passed in must not be null, but for a `type`, which then stays as it is.
class OVIX_REDUCE_API CFrameInfoExtra : public TArray<SFrameInfoExtraEntry> {
  public:
    using SEntry = SFrameInfoExtraEntry;
    class CEntry;

    /// The index of the entry, or -1.
    int FindValue(const wchar_t* name) const;
    u32 nValues() const { return size(); }
    // The field's text, valid until the entry changes; "" when there is no such entry.
    const wchar_t* GetValue(const wchar_t* name) const { return Text(name, &SEntry::value); }
    const wchar_t* GetUnit(const wchar_t* name) const { return Text(name, &SEntry::unit); }
    const wchar_t* GetType(const wchar_t* name) const { return Text(name, &SEntry::type); }
    const wchar_t* GetClass(const wchar_t* name) const { return Text(name, &SEntry::class_); }

    // All of these find the entry or append it, and then set what they are given.
    void Add(const wchar_t* name, const wchar_t* value, const wchar_t* unit, const wchar_t* type);
    /// The value of a new entry is empty, that of an old one stays.
    void AddPlaceholder(const wchar_t* name, const wchar_t* unit, const wchar_t* type);
    void SetUnit(const wchar_t* name, const wchar_t* unit) { SetText(name, &SEntry::unit, unit); }
    void SetType(const wchar_t* name, const wchar_t* type) { SetText(name, &SEntry::type, type); }
    void SetClass(const wchar_t* name, const wchar_t* text) { SetText(name, &SEntry::class_, text); }

    void Remove(const wchar_t* name);
    /// Removes all entries; the capacity stays.
    void Clear() { Empty(); }

    // For decoders, which show the same names frame after frame.
    /// Puts a whole entry in the place of another one, or behind the last. Texts that are the same stay as they are, so
    /// that nothing is allocated for them. The name may be neither reserved nor that of another entry; nothing tests
    /// it.
    bool Put(u32 index, const wchar_t* name, const wchar_t* value, const wchar_t* unit, const wchar_t* type);
    /// Removes all entries from the `count`-th on.
    void CutTo(u32 count);

    /// With an index out of range, a handle with an empty name.
    template <std::integral Index>
    CEntry operator[](Index index);
    /// A handle by that name, whether or not the entry exists.
    CEntry operator[](const wchar_t* name);

  private:
    const wchar_t* Text(const wchar_t* name, CString SEntry::*field) const;
    void SetText(const wchar_t* name, CString SEntry::*field, const wchar_t* text);
    /// Null for a reserved name, and when memory fails.
    SEntry* FindOrAppend(const wchar_t* name);
};

/// A handle to one entry by name, which may not exist yet; setting makes it. It must not outlive the list.
class OVIX_REDUCE_API CFrameInfoExtra::CEntry {
  public:
    CEntry(CFrameInfoExtra* list, const wchar_t* name) : list_(list), name_(name) {}

    bool Exists() const { return list_->FindValue(name_) >= 0; }

    /// The value, or "".
    operator const wchar_t*() const { return list_->GetValue(name_); }
    // The value read as a number; 0 when it is none.
    operator int() const;
    operator double() const;
    operator i64() const;

    CString getValue() const { return list_->GetValue(name_); }
    CString getUnit() const { return list_->GetUnit(name_); }
    CString getType() const { return list_->GetType(name_); }
    CString getClass() const { return list_->GetClass(name_); }

    // Each answers what it was given.
    /// Clears the unit, so that a new one has to follow.
    CString setValue(const CString& value);
    CString setUnit(const CString& unit);
    CString setType(const CString& type);
    CString setClass(const CString& text);

    // As `setValue`.
    CEntry& operator=(const wchar_t* value);
    CEntry& operator=(int value);
    CEntry& operator=(i64 value);
    CEntry& operator=(double value);

  private:
    CFrameInfoExtra* list_;
    CString name_;
};

template <std::integral Index>
CFrameInfoExtra::CEntry CFrameInfoExtra::operator[](Index index) {
    const bool inside = std::cmp_greater_equal(index, 0) && std::cmp_less(index, size());
    return {this, inside ? data()[index].name.c_str() : L""};
}

/// The metadata of the frame at hand, as a table of name, value, unit and type. Three rows exist in every frame and
/// stand for fields ("Time", "FrameNumber", "Preset"); the entries of `extra` follow.
///
/// A decoder refills it for each frame: `valid`, `preset`, `frameNumber`, `time`, then it empties `extra` and adds to
/// it. Per frame and per preset from the moment it exists, and not persisted.
class OVIX_REDUCE_API CFrameInfoReduceObject : public TReduceObject<CFrameInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{881933BF-2488-4D97-A1FE-8D98DA688A3A}"_guid;
    static constexpr const wchar_t* kName = L"FrameInfo";

    /// The answer of a lookup.
    struct SEntry {
        CString name;
        CString value;
        CString unit;
        CString type;
        bool exists = false;

        operator const wchar_t*() const { return value; }
    };

    CDateTime time;
    CFrameInfoExtra extra;
    bool frameFilled = true;

    CFrameInfoReduceObject();

    void Default() override;

    /// By name, without regard to case. One that does not exist gives empty texts and leaves nothing behind.
    SEntry Get(const wchar_t* name) const;
    /// The fixed rows are 0 to 2; at or past `NumEntries()` all is empty.
    SEntry GetAt(u32 index) const;
    u32 NumEntries() const;

    /// A fixed row takes the text as a time or a number, however it reads; any other name goes to `extra`, where a set
    /// clears the unit.
    void SetValue(const wchar_t* name, const wchar_t* value);

    CString GetValue(const wchar_t* name) const { return Get(name).value; }
    CString GetUnit(const wchar_t* name) const { return Get(name).unit; }
    CString GetType(const wchar_t* name) const { return Get(name).type; }
    CString GetValueAt(u32 index) const { return GetAt(index).value; }
    CString GetUnitAt(u32 index) const { return GetAt(index).unit; }
    CString GetTypeAt(u32 index) const { return GetAt(index).type; }
    CString GetNameAt(u32 index) const { return GetAt(index).name; }
};

/// A header that an application defines itself; the library only carries it.
struct SUserFrameHeaderConfig {
    u8 bytes[16];
};
/// One field of such a header; the library only carries it.
struct SUserFrameHeaderFieldDesc {
    u8 bytes[328];
};
static_assert(sizeof(SUserFrameHeaderConfig) == 16 && sizeof(SUserFrameHeaderFieldDesc) == 328);

/// The raw header of a frame, for applications that keep it beside the pixels: `IFilter::GetHeaderInfo` answers its
/// type and size, `ExtractHeader` its bytes. Not persisted, and filled by nobody in this library.
class OVIX_REDUCE_API CFrameHeaderReduceObject : public TReduceObject<CFrameHeaderReduceObject> {
  public:
    static constexpr GUID typeID = "{ABB88590-614E-41F8-9CE0-6ACA00BBA514}"_guid;
    static constexpr const wchar_t* kName = L"FrameHeader";

    GUID headerType = CGUID::Empty;  ///< what kind of header the bytes are
    TArray<u8> headerData;

    CFrameHeaderReduceObject();

    /// Copies `version` too.
    TSharedPtr<IReduceObject> Duplicate() const override;
    /// Unlike in other classes, the place in the source goes too: all is as in a fresh object, save for the capacity of
    /// `headerData`.
    void Default() override;
};

}  // namespace ovix::reduce
