#pragma once

#include "core/array.h"
#include "core/process.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

class CAbateCfgReduceObject;
class CCorrectionCfgReduceObject;
class CCorrectionReduceObject;
class CFOVReduceObject;
class CFrameInfoReduceObject;
class CObjectParametersReduceObject;
class CSourceInfoReduceObject;

/// The metadata of one source: shared objects in order of insertion, which is also their order in an info file.
///
/// The lock is an offered protocol: no operation takes it. Who shares an array between threads holds `ReadLock` around
/// lookups and `WriteLock` around changes, every lookup with `create` included. Copies share their objects; `Duplicate`
/// makes independent ones.
class OVIX_REDUCE_API CReduceObjectArray : public TArray<TSharedPtr<IReduceObject>> {
  public:
    CReduceObjectArray();
    CReduceObjectArray(const CReduceObjectArray&);
    CReduceObjectArray& operator=(const CReduceObjectArray&);
    ~CReduceObjectArray() override;

    /// False for an empty pointer, and when the array cannot grow.
    bool Add(const TSharedPtr<IReduceObject>& object) { return object && TArray::Add(object); }

    /// The object of that type whose preset, as a signed byte, is `preset`. Without one: a new object of that preset
    /// when `create` is set (empty when nobody registered the type), else the last one of the whole source, else empty.
    ///
    /// -1 finds an object of the whole source as an exact match; 255 never matches exactly, so that with `create` it
    /// makes a second one.
    TSharedPtr<IReduceObject> GetObjectOfType(const GUID& type, int preset, bool create);
    /// The same by name, without regard to case.
    TSharedPtr<IReduceObject> GetObjectByName(const wchar_t* name, int preset, bool create);
    bool HasObjectOfType(const GUID& type, bool validOnly) const;
    bool HasObjectWithName(const wchar_t* name, bool validOnly) const;
    /// The distinct type ids, or names, in order of first appearance.
    void GetTypeIDs(TArray<GUID>& ids, bool validOnly) const;
    void GetNames(TArray<CString>& names, bool validOnly) const;

    /// Empty for an index at or past the end.
    TSharedPtr<IReduceObject> GetAt(u32 index) const;
    /// Removes the first object of the type with exactly that preset, if there is one.
    void RemoveObjectOfType(const GUID& type, int preset);
    void RemoveAllObjectsOfType(const GUID& type);
    void Reset();
    /// Replaces the target's content by deep copies of all objects.
    void Duplicate(CReduceObjectArray& target) const;

    void ReadLock() { lock_.ReadLock(); }
    void ReadUnlock() { lock_.ReadUnlock(); }
    void WriteLock() { lock_.WriteLock(); }
    void WriteUnlock() { lock_.WriteUnlock(); }

    /// `GetObjectOfType` and a cast: empty when the object is of another class, which a plug-in may bring about.
    template <class Object>
    TSharedPtr<Object> Get(int preset, bool create) {
        return GetObjectOfType(Object::typeID, preset, create).template Cast<Object>();
    }
    TSharedPtr<CSourceInfoReduceObject> GetSourceInfo(bool create);
    TSharedPtr<CObjectParametersReduceObject> GetObjectParameters(bool create);
    TSharedPtr<CFOVReduceObject> GetFOV(bool create);
    TSharedPtr<CFrameInfoReduceObject> GetFrameInfo(u8 preset, bool create);
    // These three are defined beside their classes, in `reduce/pixels`.
    TSharedPtr<CCorrectionCfgReduceObject> GetCorrectionCfg(bool create);
    TSharedPtr<CAbateCfgReduceObject> GetAbateCfg(bool create);
    TSharedPtr<CCorrectionReduceObject> GetCorrection(u8 preset, bool create);

  private:
    CRWLock lock_;
};

}  // namespace ovix::reduce
