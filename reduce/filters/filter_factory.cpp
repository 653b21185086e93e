#include "reduce/filters/filter_factory.h"

#include <algorithm>

template class ovix::TSingletonPtr<ovix::reduce::CFilterFactory, 100000, 0,
                                   ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

constinit const FilterFactoryHolder FilterFactory{};
CFilterFactory* filterFactory() { return FilterFactoryHolder::GetInstance(); }

SFilterFactoryExtraStuff::SFilterFactoryExtraStuff() = default;
SFilterFactoryExtraStuff::SFilterFactoryExtraStuff(TArray<GUID>& types) : pixelTypes(std::move(types)) {}

bool CFilterFactory::Register(const wchar_t* name, TArray<GUID> pixelTypes, Create_t create, Destroy_t destroy,
                              FrameCheck check, FrameDescription describe) {
    SFilterFactoryExtraStuff extra(pixelTypes);
    extra.check = check;
    extra.describe = describe;
    return TNamedClassFactory::Register(name, create, destroy, extra);
}

TSharedPtr<IFilter> CFilterFactory::CreateForPixelType(GUID type) const { return Create(GetPixelTypeHandler(type)); }
bool CFilterFactory::IsPixelTypeHandled(GUID type) const { return !GetPixelTypeHandler(type).IsEmpty(); }

CString CFilterFactory::GetPixelTypeHandler(GUID type) const {
    for (u32 i = 0; i < GetEntryCount(); ++i) {
        const SEntry& entry = GetEntryAt(i);
        const TArray<GUID>& types = entry.extra.pixelTypes;
        if (std::find(types.begin(), types.end(), type) != types.end()) return entry.name;
    }
    return {};
}

}  // namespace ovix::reduce
