#include "reduce/convert/converter_factory.h"

#include <algorithm>

#include "reduce/objects/reduce_object_array.h"
#include "reduce/objects/source_info_reduce_object.h"

template class ovix::TSingletonPtr<ovix::reduce::CConverterFactory, 100000, 0,
                                   ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

constinit const ConverterFactoryHolder ConverterFactory{};
CConverterFactory* converterFactory() { return ConverterFactoryHolder::GetInstance(); }

namespace {

bool Contains(const TArray<EUnit>& units, EUnit unit) {
    return std::find(units.begin(), units.end(), unit) != units.end();
}

/// `ask` with the base unit of the array's source info; without one the empty answer of its kind.
template <class Ask>
auto WithBaseOf(CReduceObjectArray& objs, Ask&& ask) -> decltype(ask(Counts)) {
    const auto source = objs.GetSourceInfo(false);
    if (!source) return {};
    return ask(source->baseUnit);
}

}  // namespace

bool CConverterFactory::Register(const wchar_t* name, const GUID& guid, SupportedUnitsFunc unitsFunc, Create_t create,
                                 Destroy_t destroy) {
    return TNamedClassFactory::Register(name, create, destroy, SConverterFactoryExtraStuff{guid, unitsFunc});
}

TSharedPtr<IConverter> CConverterFactory::CreateByGUID(const GUID& guid) const { return Create(GetNameFromGUID(guid)); }

CString CConverterFactory::GetNameFromGUID(const GUID& guid) const {
    for (u32 i = 0; i < GetEntryCount(); ++i) {
        if (GetEntryAt(i).extra.guid == guid) return GetEntryAt(i).name;
    }
    return {};
}

bool CConverterFactory::GetConverterUnits(TArray<SConverterUnits>& rows, EUnit base, CReduceObjectArray& objs) const {
    for (u32 i = 0; i < GetEntryCount(); ++i) {
        const SConverterFactoryExtraStuff& extra = GetEntryAt(i).extra;
        SConverterUnits row{extra.guid, {}};
        if (extra.unitsFunc && extra.unitsFunc(row.units, base, objs) && row.units.size()) rows.Add(row);
    }
    return rows.size() != 0;
}

bool CConverterFactory::GetSupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) const {
    units.Empty();
    TArray<SConverterUnits> rows;
    GetConverterUnits(rows, base, objs);
    for (const SConverterUnits& row : rows) {
        for (const EUnit unit : row.units) {
            if (!Contains(units, unit)) units.Add(unit);
        }
    }
    if (!units.size()) {
        if (const auto source = objs.GetSourceInfo(false)) units.Add(source->baseUnit);
    }
    return units.size() != 0;
}

bool CConverterFactory::IsUnitSupported(EUnit unit, EUnit base, CReduceObjectArray& objs) const {
    TArray<EUnit> units;
    return GetSupportedUnits(units, base, objs) && Contains(units, unit);
}

GUID CConverterFactory::ConverterGUIDForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) const {
    TArray<SConverterUnits> rows;
    GetConverterUnits(rows, base, objs);
    for (const SConverterUnits& row : rows) {
        if (Contains(row.units, unit)) return row.guid;
    }
    return CGUID::Empty;
}

TSharedPtr<IConverter> CConverterFactory::ConverterForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) const {
    return CreateByGUID(ConverterGUIDForUnit(base, objs, unit));
}

bool CConverterFactory::GetConverterUnits(TArray<SConverterUnits>& rows, CReduceObjectArray& objs) const {
    return WithBaseOf(objs, [&](EUnit base) { return GetConverterUnits(rows, base, objs); });
}
bool CConverterFactory::GetSupportedUnits(TArray<EUnit>& units, CReduceObjectArray& objs) const {
    return WithBaseOf(objs, [&](EUnit base) { return GetSupportedUnits(units, base, objs); });
}
bool CConverterFactory::IsUnitSupported(EUnit unit, CReduceObjectArray& objs) const {
    return WithBaseOf(objs, [&](EUnit base) { return IsUnitSupported(unit, base, objs); });
}
GUID CConverterFactory::ConverterGUIDForUnit(CReduceObjectArray& objs, EUnit unit) const {
    return WithBaseOf(objs, [&](EUnit base) { return ConverterGUIDForUnit(base, objs, unit); });
}
TSharedPtr<IConverter> CConverterFactory::ConverterForUnit(CReduceObjectArray& objs, EUnit unit) const {
    return WithBaseOf(objs, [&](EUnit base) { return ConverterForUnit(base, objs, unit); });
}

}  // namespace ovix::reduce
