#pragma once

#include "reduce/convert/converter_factory.h"

namespace ovix::reduce {

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
