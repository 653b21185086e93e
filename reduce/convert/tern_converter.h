#pragma once

#include "reduce/convert/preset_table_converter.h"
#include "reduce/convert/trn_meas_conv.h"
#include "reduce/convert/typed_converter.h"

namespace ovix::reduce {

/// Counts of a Tern-family camera to radiance, object signal or temperature by its factory calibration
/// (`CTernFactoryCalReduceObject`), with a model and a table of 16,384 entries for each of four presets.
///
/// Buffers go through the tables, single values and ranges always through the formula. There is no way back from object
/// signals.
///
/// The compensation of the camera's warmth follows the instrument's temperatures only as often as `Update` is called.
/// `ChangeObjectParameters` takes emissivity and distance. `Update` is false, with the models set so far as they are,
/// when an enabled preset has no calibration; whether that is valid is for `SupportedUnits` to ask.
class OVIX_REDUCE_API CTernConverter : public TConverter<CTernConverter, CPresetTableConverter> {
  public:
    static constexpr u8 kPresets = 4;
    static constexpr const wchar_t* kName = L"TernConverter";
    static constexpr GUID kID = "{1DB97A6E-888B-45D3-B28D-9C29582E75E2}"_guid;
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CTernConverter();

    bool Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output, ETempType outputType,
                bool* const presets, u8 count, u32 flags) override;
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    using CPresetTableConverter::SignalToOutput;
    bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset) override;
    bool OutputToSignal(float value, u16& signal, u8& status, u8 preset) override;

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    CTrnMeasConv meas_[kPresets];
};

}  // namespace ovix::reduce
