#include "reduce/objects/frame_info_reduce_object.h"

#include "core/numbers.h"

namespace ovix::reduce {

namespace {

enum EFixedRow : u32 { kTimeRow, kFrameNumberRow, kPresetRow, kFixedRows };

constexpr const wchar_t* kFixedNames[kFixedRows] = {L"Time", L"FrameNumber", L"Preset"};

/// `kFixedRows` for any other name.
u32 FindFixedRow(const wchar_t* name) {
    u32 row = 0;
    while (row < kFixedRows && !EqualsNoCase(name, kFixedNames[row])) ++row;
    return row;
}

}  // namespace

CFrameInfoReduceObject::CFrameInfoReduceObject() {
    valid = true;
    persist = false;
    frameNumber = 0;
    preset = 0;
}

void CFrameInfoReduceObject::Default() {
    valid = true;
    frameFilled = true;
    time.Now();
    extra.Clear();  // the capacity serves the next frame
}

CFrameInfoReduceObject::SEntry CFrameInfoReduceObject::GetAt(u32 index) const {
    switch (index) {
        case kTimeRow:
            return {kFixedNames[index], time.Format(L"%j:%(irig)"), L"IRIG", L"ascii", true};
        case kFrameNumberRow:
            return {kFixedNames[index], CUInt64::ToString(frameNumber), L"counter", L"int", true};
        case kPresetRow:
            return {kFixedNames[index], CInt32::ToString(static_cast<i8>(preset)), L"counter", L"int", true};
        default:
            break;
    }
    if (index >= NumEntries()) return {};
    const CFrameInfoExtra::SEntry& entry = extra.ConstGetItem(index - kFixedRows);
    return {entry.name, entry.value, entry.unit, entry.type, true};
}

CFrameInfoReduceObject::SEntry CFrameInfoReduceObject::Get(const wchar_t* name) const {
    const u32 row = FindFixedRow(name);
    if (row < kFixedRows) return GetAt(row);
    const int index = extra.FindValue(name);
    if (index < 0) return {name, L"", L"", L"", false};
    SEntry entry = GetAt(kFixedRows + static_cast<u32>(index));
    entry.name = name;  // as it was asked for
    return entry;
}

u32 CFrameInfoReduceObject::NumEntries() const { return extra.nValues() + kFixedRows; }

void CFrameInfoReduceObject::SetValue(const wchar_t* name, const wchar_t* value) {
    switch (FindFixedRow(name)) {
        case kTimeRow:
            time = CDateTime(value);
            break;
        case kFrameNumberRow:
            frameNumber = CVariant(value).ToUInt64();
            break;
        case kPresetRow:
            preset = static_cast<u8>(CVariant(value).ToInt8());
            break;
        default:
            extra.Add(name, value, L"", nullptr);
    }
}

}  // namespace ovix::reduce
