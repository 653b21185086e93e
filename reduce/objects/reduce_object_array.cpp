#include "reduce/objects/reduce_object_array.h"

#include <algorithm>

#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"

namespace ovix::reduce {

namespace {

int SignedPreset(const IReduceObject& object) { return static_cast<i8>(object.preset); }

/// The one walk behind both lookups.
template <class Matches, class Create>
TSharedPtr<IReduceObject> Find(CReduceObjectArray& array, int preset, bool create, Matches&& matches, Create&& make) {
    TSharedPtr<IReduceObject> ofWholeSource;
    for (const TSharedPtr<IReduceObject>& object : array) {
        if (!object || !matches(*object)) continue;
        if (SignedPreset(*object) == preset) return object;
        if (object->preset == IReduceObject::NoPreset) ofWholeSource = object;
    }
    if (!create) return ofWholeSource;
    TSharedPtr<IReduceObject> made = make();
    if (made) {
        made->preset = static_cast<u8>(preset);
        array.Add(made);  // an array that cannot grow still hands the object out
    }
    return made;
}

template <class T>
void AddDistinct(TArray<T>& list, const T& value) {
    if (std::find(list.begin(), list.end(), value) == list.end()) list.Add(value);
}

}  // namespace

CReduceObjectArray::CReduceObjectArray() = default;
CReduceObjectArray::CReduceObjectArray(const CReduceObjectArray&) = default;
CReduceObjectArray& CReduceObjectArray::operator=(const CReduceObjectArray&) = default;
CReduceObjectArray::~CReduceObjectArray() = default;

TSharedPtr<IReduceObject> CReduceObjectArray::GetObjectOfType(const GUID& type, int preset, bool create) {
    return Find(
        *this, preset, create, [&](const IReduceObject& object) { return object.GetTypeID() == type; },
        [&] { return reduceObjectFactory()->CreateByTypeID(type); });
}

TSharedPtr<IReduceObject> CReduceObjectArray::GetObjectByName(const wchar_t* name, int preset, bool create) {
    return Find(
        *this, preset, create, [&](const IReduceObject& object) { return EqualsNoCase(object.GetName(), name); },
        [&] { return reduceObjectFactory()->CreateByName(name); });
}

bool CReduceObjectArray::HasObjectOfType(const GUID& type, bool validOnly) const {
    return std::any_of(begin(), end(), [&](const TSharedPtr<IReduceObject>& object) {
        return object && object->GetTypeID() == type && (object->valid || !validOnly);
    });
}

bool CReduceObjectArray::HasObjectWithName(const wchar_t* name, bool validOnly) const {
    return std::any_of(begin(), end(), [&](const TSharedPtr<IReduceObject>& object) {
        return object && EqualsNoCase(object->GetName(), name) && (object->valid || !validOnly);
    });
}

void CReduceObjectArray::GetTypeIDs(TArray<GUID>& ids, bool validOnly) const {
    ids.Empty();
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (object && (object->valid || !validOnly)) AddDistinct(ids, object->GetTypeID());
    }
}

void CReduceObjectArray::GetNames(TArray<CString>& names, bool validOnly) const {
    names.Empty();
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (object && (object->valid || !validOnly)) AddDistinct(names, CString(object->GetName()));
    }
}

TSharedPtr<IReduceObject> CReduceObjectArray::GetAt(u32 index) const {
    return index < size() ? ConstGetItem(index) : TSharedPtr<IReduceObject>();
}

void CReduceObjectArray::RemoveObjectOfType(const GUID& type, int preset) {
    for (u32 i = 0; i < size(); ++i) {
        const TSharedPtr<IReduceObject>& object = ConstGetItem(i);
        if (!object || object->GetTypeID() != type || SignedPreset(*object) != preset) continue;
        Remove(i);
        return;
    }
}

void CReduceObjectArray::RemoveAllObjectsOfType(const GUID& type) {
    for (u32 i = size(); i-- > 0;) {
        const TSharedPtr<IReduceObject>& object = ConstGetItem(i);
        if (object && object->GetTypeID() == type) Remove(i);
    }
}

void CReduceObjectArray::Reset() { Empty(); }

void CReduceObjectArray::Duplicate(CReduceObjectArray& target) const {
    if (&target == this) return;
    target.Reset();
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (object) target.Add(object->Duplicate());
    }
}

TSharedPtr<CSourceInfoReduceObject> CReduceObjectArray::GetSourceInfo(bool create) {
    return Get<CSourceInfoReduceObject>(-1, create);
}
TSharedPtr<CObjectParametersReduceObject> CReduceObjectArray::GetObjectParameters(bool create) {
    return Get<CObjectParametersReduceObject>(-1, create);
}
TSharedPtr<CFOVReduceObject> CReduceObjectArray::GetFOV(bool create) { return Get<CFOVReduceObject>(-1, create); }
TSharedPtr<CFrameInfoReduceObject> CReduceObjectArray::GetFrameInfo(u8 preset, bool create) {
    return Get<CFrameInfoReduceObject>(preset, create);
}

}  // namespace ovix::reduce
