#include "reduce/objects/frame_info_extra.h"

#include "core/numbers.h"

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

CFrameInfoExtra::CEntry CFrameInfoExtra::operator[](int index) {
    const bool inside = index >= 0 && static_cast<u32>(index) < size();
    return {this, inside ? data()[index].name.c_str() : L""};
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

}  // namespace ovix::reduce
