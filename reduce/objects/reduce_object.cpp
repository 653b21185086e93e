#include "reduce/objects/reduce_object.h"

#include "core/file.h"
#include "core/process.h"

template class ovix::TSingletonPtr<ovix::reduce::CReduceObjectFactory, 100000, 0,
                                   ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

IReduceObject::IReduceObject() = default;
IReduceObject::IReduceObject(const IReduceObject&) = default;
IReduceObject& IReduceObject::operator=(const IReduceObject&) = default;
IReduceObject::~IReduceObject() = default;

bool IReduceObject::IsCalObj() const { return false; }
void IReduceObject::Default() { valid = false; }
bool IReduceObject::Load(TSharedPtr<IFile>, u32, u32) { return false; }
bool IReduceObject::Save(TSharedPtr<IFile>, u32) { return false; }
bool IReduceObject::ShouldPersist(u32) const { return persist; }

bool IReduceObject::CalcCRC(u32& crc, u64& size, u32 flags) {
    CCalcCRC32File sum;
    if (!Save(BorrowShared(sum), flags)) return false;
    crc = sum.GetCRC();
    size = sum.GetSize();
    return true;
}

constinit const ReduceObjectFactoryHolder ReduceObjectFactory{};
CReduceObjectFactory* reduceObjectFactory() { return ReduceObjectFactoryHolder::GetInstance(); }

TSharedPtr<IReduceObject> CReduceObjectFactory::CreateByTypeID(const GUID& id) const {
    return Create(GetNameFromTypeID(id));
}

CString CReduceObjectFactory::GetNameFromTypeID(const GUID& id) const {
    for (u32 i = 0; i < GetEntryCount(); ++i) {
        if (GetEntryAt(i).extra.typeID == id) return GetEntryAt(i).name;
    }
    return {};
}

bool CReduceObjectFactory::Register(const wchar_t* name, const GUID& id, Create_t create, Destroy_t destroy) {
    const bool done = TNamedClassFactory::Register(name, create, destroy, SReduceObjectFactoryExtraStuff(id));
    const wchar_t* format = done ? L"[%u]: CReduceObjectFactory::Register: Registered %s as id "
                                   L"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}\n"
                                 : L"[%u]: CReduceObjectFactory::Register: Failed to register %s as id "
                                   L"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}\n";
    DebugOutput(CString::FromFormat(format, CurrentThreadId(), name, id.data1, id.data2, id.data3, id.data4[0],
                                    id.data4[1], id.data4[2], id.data4[3], id.data4[4], id.data4[5], id.data4[6],
                                    id.data4[7]));
    return done;
}

}  // namespace ovix::reduce
