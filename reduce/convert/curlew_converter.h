#pragma once

#include "reduce/convert/meas_conv.h"
#include "reduce/convert/table_converter.h"
#include "reduce/convert/typed_converter.h"

namespace ovix::reduce {

/// Counts of a Curlew-family camera to radiance, object signal or temperature by its factory calibration
/// (`CCurlewFactoryCalReduceObject`), through one model and one table of 65,536 entries.
///
/// The family has one calibration, that of preset 0, for all presets. So the forms with a preset map stay the defaults
/// of `IConverter`: they ignore the map and, with an index list as well, convert the first `count` pixels.
///
/// Single values know temperatures only. `ChangeObjectParameters` takes emissivity and distance; all else takes an
/// `Update`, which also writes the transmission in force back to the array's object parameters. `Update` is false, with
/// the model as it was, without a valid calibration.
class OVIX_REDUCE_API CCurlewConverter : public TConverter<CCurlewConverter, CTableConverter> {
  public:
    static constexpr const wchar_t* kName = L"CurlewConverter";
    static constexpr GUID kID = "{E81693AB-B4B6-4EC4-85C0-E89D1C35061E}"_guid;
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CCurlewConverter();

    bool Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output, ETempType outputType,
                bool* const presets, u8 count, u32 flags) override;
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    /// Ranges of more than 32769 signals build the table. Whenever there is one, the range is copied from it but for
    /// its last signal, whose element stays as it was.
    bool SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;
    /// A scale that is none of the four stands for kelvin here, and so in `OutputToSignal`.
    bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset) override;
    bool OutputToSignal(float value, u16& signal, u8& status, u8 preset) override;

    /// Builds the table if it is not up to date. False for a unit that the model does not know.
    bool UpdateLUT();

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    CMeasConv meas_;
};

}  // namespace ovix::reduce
