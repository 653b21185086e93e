#pragma once

#include "reduce/convert/mrl_conv.h"
#include "reduce/convert/preset_table_converter.h"
#include "reduce/convert/typed_converter.h"

namespace ovix::reduce {

/// Counts of a Merlin-family camera to radiance or temperature by its factory calibration
/// (`CMerlinFactoryCalReduceObject`), with a model and a table of 16,384 entries for each of four presets.
///
/// `ChangeObjectParameters` takes the whole scene, unlike in the other families. `Update` is false, with the models set
/// so far as they are, when an enabled preset has no calibration; whether that is valid is for `SupportedUnits` to ask.
class OVIX_REDUCE_API CMerlinConverter : public TConverter<CMerlinConverter, CPresetTableConverter> {
  public:
    static constexpr u8 kPresets = 4;
    static constexpr const wchar_t* kName = L"MerlinConverter";
    static constexpr GUID kID = "{3805B300-1834-4F64-BC35-1F7ED090AF1F}"_guid;
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CMerlinConverter();

    bool Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output, ETempType outputType,
                bool* const presets, u8 count, u32 flags) override;
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    /// With both ends below 16383, ranges of more than 8193 signals build the table, and whenever there is one, the
    /// range is copied from it but for its last signal, whose element stays as it was.
    bool SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;
    bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset) override;
    bool OutputToSignal(float value, u16& signal, u8& status, u8 preset) override;

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    CMrlConv meas_[kPresets];
};

}  // namespace ovix::reduce
