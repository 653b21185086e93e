#pragma once

#include "core/date_time.h"
#include "reduce/objects/frame_info_extra.h"
#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

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

}  // namespace ovix::reduce
