#pragma once

#include "core/array.h"
#include "core/string.h"
#include "reduce/api.h"

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
    CEntry operator[](int index);
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

}  // namespace ovix::reduce
