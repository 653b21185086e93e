#include "reduce/objects/frame_info_reduce_object.h"

#include "core/string.h"

namespace ovix::reduce {

namespace {

bool IsReserved(const wchar_t* name) {
    return EqualsNoCase(name, L"Time") || EqualsNoCase(name, L"FrameNumber") || EqualsNoCase(name, L"Preset");
}

}  // namespace

int CFrameInfoExtra::FindValue(const wchar_t* name) const {
    for (u32 i = 0; i < size(); ++i) {
        if (ConstGetItem(i).name.EqualsNoCase(name)) return static_cast<int>(i);
    }
    return -1;
}

const wchar_t* CFrameInfoExtra::Text(const wchar_t* name, CString SEntry::*field) const {
    const int index = FindValue(name);
    return index < 0 ? L"" : (data()[index].*field).c_str();
}

CFrameInfoExtra::SEntry* CFrameInfoExtra::FindOrAppend(const wchar_t* name) {
    if (IsReserved(name)) return nullptr;
    const int index = FindValue(name);
    if (index >= 0) return data() + index;
    if (!ImplicitAddition(size() + 1)) return nullptr;
    SEntry& added = data()[size() - 1];
    added.name = name;
    return &added;
}

void CFrameInfoExtra::Add(const wchar_t* name, const wchar_t* value, const wchar_t* unit, const wchar_t* type) {
    SEntry* entry = FindOrAppend(name);
    if (!entry) return;
    entry->value = value;
    entry->unit = unit;
    if (type) entry->type = type;
}

void CFrameInfoExtra::AddPlaceholder(const wchar_t* name, const wchar_t* unit, const wchar_t* type) {
    SEntry* entry = FindOrAppend(name);
    if (!entry) return;
    entry->unit = unit;
    if (type) entry->type = type;
}

void CFrameInfoExtra::SetText(const wchar_t* name, CString SEntry::*field, const wchar_t* text) {
    if (SEntry* entry = FindOrAppend(name)) entry->*field = text;
}

void CFrameInfoExtra::Remove(const wchar_t* name) {
    const int index = FindValue(name);
    if (index >= 0) TArray::Remove(static_cast<u32>(index));
}

bool CFrameInfoExtra::Put(u32 index, const wchar_t* name, const wchar_t* value, const wchar_t* unit,
                          const wchar_t* type) {
    if (index > size() || !ImplicitAddition(index + 1)) return false;
    const auto set = [](CString& text, const wchar_t* wanted) {
        if (!text.Equals(wanted)) text = wanted;
    };
    SEntry& entry = data()[index];
    set(entry.name, name);
    set(entry.value, value);
    set(entry.unit, unit);
    set(entry.type, type);
    set(entry.class_, L"");
    return true;
}

void CFrameInfoExtra::CutTo(u32 count) {
    if (count < size()) SetSize(count);
}

CFrameInfoExtra::CEntry CFrameInfoExtra::operator[](const wchar_t* name) { return {this, name}; }

CFrameInfoExtra::CEntry::operator int() const { return TextToInt32(*this); }
CFrameInfoExtra::CEntry::operator double() const { return TextToDouble(*this); }
CFrameInfoExtra::CEntry::operator i64() const { return TextToInt64(*this); }

CString CFrameInfoExtra::CEntry::setValue(const CString& value) {
    list_->Add(name_, value, L"", nullptr);
    return value;
}
CString CFrameInfoExtra::CEntry::setUnit(const CString& unit) {
    list_->SetUnit(name_, unit);
    return unit;
}
CString CFrameInfoExtra::CEntry::setType(const CString& type) {
    list_->SetType(name_, type);
    return type;
}
CString CFrameInfoExtra::CEntry::setClass(const CString& text) {
    list_->SetClass(name_, text);
    return text;
}

CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(const wchar_t* value) {
    setValue(value);
    return *this;
}
CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(int value) {
    return *this = CString::FromFormat(L"%d", value).c_str();
}
CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(i64 value) {
    return *this = CString::FromFormat(L"%I64d", value).c_str();
}
CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(double value) {
    return *this = CString::FromFormat(L"%f", value).c_str();
}

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

CFrameHeaderReduceObject::CFrameHeaderReduceObject() { persist = false; }

TSharedPtr<IReduceObject> CFrameHeaderReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> copy = TReduceObject::Duplicate();
    copy->version = version;
    return copy;
}

void CFrameHeaderReduceObject::Default() {
    const CFrameHeaderReduceObject fresh;
    IReduceObject::operator=(fresh);
    headerType = fresh.headerType;
    headerData.Empty();
}

}  // namespace ovix::reduce
