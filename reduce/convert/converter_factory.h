#pragma once

#include "reduce/convert/converter.h"
#include "reduce/factory/named_class_factory.h"
#include "reduce/factory/plugin_scan.h"

namespace ovix::reduce {

/// What a converter class can make of a source: appends its units, without clearing the array, and answers whether it
/// can work on the source at all.
using SupportedUnitsFunc = bool (*)(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

struct SConverterFactoryExtraStuff {
    GUID guid;
    SupportedUnitsFunc unitsFunc = nullptr;
};

/// One row of an answer: a converter class and the units that it offers.
struct SConverterUnits {
    GUID guid;
    TArray<EUnit> units;
};

/// Knows which units can be offered for a source, and which converter gives a wanted one.
///
/// Of several converters that can give a unit the one registered first wins, whatever else they offer. Plug-ins
/// register before the built-in classes.
///
/// Each question comes twice; without a base unit it takes `baseUnit` of the array's source info, and answers false, a
/// zero GUID or an empty pointer when there is none.
class OVIX_REDUCE_API CConverterFactory
    : public TNamedClassFactory<IConverter, TNamedClassFactorySharedPtrCreatePolicy<IConverter>,
                                SConverterFactoryExtraStuff> {
  public:
    /// False when the name is taken.
    bool Register(const wchar_t* name, const GUID& guid, SupportedUnitsFunc unitsFunc, Create_t create,
                  Destroy_t destroy);

    /// A new converter, which wants its `Update` before use. An unknown name or GUID gives an empty pointer.
    TSharedPtr<IConverter> CreateByName(const wchar_t* name) const { return Create(name); }
    TSharedPtr<IConverter> CreateByGUID(const GUID& guid) const;
    /// A zero GUID for an unknown name.
    GUID GetGUIDFromName(const wchar_t* name) const { return GetEntry(name).extra.guid; }
    /// An empty string for an unknown GUID.
    CString GetNameFromGUID(const GUID& guid) const;

    /// Appends a row for each converter that offers anything, in order of registration, and answers whether `rows` has
    /// any now.
    bool GetConverterUnits(TArray<SConverterUnits>& rows, EUnit base, CReduceObjectArray& objs) const;
    bool GetConverterUnits(TArray<SConverterUnits>& rows, CReduceObjectArray& objs) const;

    /// Replaces the content by all units on offer, in order of first appearance; a source for which no converter works
    /// still offers its own unit.
    bool GetSupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) const;
    bool GetSupportedUnits(TArray<EUnit>& units, CReduceObjectArray& objs) const;
    bool IsUnitSupported(EUnit unit, EUnit base, CReduceObjectArray& objs) const;
    bool IsUnitSupported(EUnit unit, CReduceObjectArray& objs) const;

    GUID ConverterGUIDForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) const;
    GUID ConverterGUIDForUnit(CReduceObjectArray& objs, EUnit unit) const;
    TSharedPtr<IConverter> ConverterForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) const;
    TSharedPtr<IConverter> ConverterForUnit(CReduceObjectArray& objs, EUnit unit) const;
};

using ConverterFactoryHolder = TFactoryHolder<CConverterFactory>;
OVIX_REDUCE_API CConverterFactory* converterFactory();

}  // namespace ovix::reduce

extern template class OVIX_REDUCE_API
    ovix::TSingletonPtr<ovix::reduce::CConverterFactory, 100000, 0, ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

extern OVIX_REDUCE_API const ConverterFactoryHolder ConverterFactory;

/// What every concrete converter repeats: identity and registration. `Converter` has
///
///     static constexpr const wchar_t* kName = L"...";
///     static constexpr GUID kID = "{...}"_guid;
///     static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);
template <class Converter, class Base = IConverter>
class TConverter : public Base {
  public:
    using Base::Base;

    static bool Register() {
        using Functions = TCreateAndDestroy<Converter, IConverter>;
        return converterFactory()->Register(Converter::kName, Converter::kID, Converter::SupportedUnits,
                                            Functions::Create, Functions::Destroy);
    }

    CString name() const override { return Converter::kName; }
    GUID id() const override { return Converter::kID; }
};

}  // namespace ovix::reduce
