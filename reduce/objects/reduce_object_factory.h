#pragma once

#include "reduce/factory/named_class_factory.h"
#include "reduce/factory/plugin_scan.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

struct SReduceObjectFactoryExtraStuff {
    SReduceObjectFactoryExtraStuff() = default;
    explicit SReduceObjectFactoryExtraStuff(const GUID& id) : typeID(id) {}

    GUID typeID;
};

/// Makes reduce objects from a name or a type id. Unknown ones give empty pointers, zero GUIDs or empty names.
class OVIX_REDUCE_API CReduceObjectFactory
    : public TNamedClassFactory<IReduceObject, TNamedClassFactorySharedPtrCreatePolicy<IReduceObject>,
                                SReduceObjectFactoryExtraStuff> {
  public:
    TSharedPtr<IReduceObject> CreateByName(const wchar_t* name) const { return Create(name); }
    TSharedPtr<IReduceObject> CreateByTypeID(const GUID& id) const;
    GUID GetTypeIDFromName(const wchar_t* name) const { return GetEntry(name).extra.typeID; }
    CString GetNameFromTypeID(const GUID& id) const;
    /// As that of the template, with a line to the debugger output on what became of it: the only lines that this
    /// library ever logs.
    bool Register(const wchar_t* name, const GUID& id, Create_t create, Destroy_t destroy);
};

using ReduceObjectFactoryHolder = TFactoryHolder<CReduceObjectFactory>;
OVIX_REDUCE_API CReduceObjectFactory* reduceObjectFactory();

}  // namespace ovix::reduce

extern template class OVIX_REDUCE_API ovix::TSingletonPtr<ovix::reduce::CReduceObjectFactory, 100000, 0,
                                                          ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

extern OVIX_REDUCE_API const ReduceObjectFactoryHolder ReduceObjectFactory;

}  // namespace ovix::reduce
