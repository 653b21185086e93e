#pragma once

#include "reduce/convert/converter_factory.h"
#include "reduce/convert/meas_conv.h"
#include "reduce/convert/mrl_conv.h"
#include "reduce/convert/table_converter.h"
#include "reduce/convert/trn_meas_conv.h"

/// The converters of the three camera families, from counts by the calibration of the factory.
///
/// Buffers go through a table for each model. Each `Update` writes the transmission in force back to the array's object
/// parameters. Single values come from and go back to counts by the formula, but there is no way back from object
/// signals.
namespace ovix::reduce {

/// Counts of a Curlew-family camera to radiance, object signal or temperature by its factory calibration
/// (`CCurlewFactoryCalReduceObject`), through one model and one table of 65,536 entries.
///
/// The family has one calibration, that of preset 0, for all presets. So the forms with a preset map stay the defaults
/// of `IConverter`: they ignore the map and, with an index list as well, convert the first `count` pixels.
///
/// Single values know temperatures only. `ChangeObjectParameters` takes emissivity and distance; all else takes an
/// `Update`, which is false, with the model as it was, without a valid calibration.
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
    bool GetCalibratedRange(float& lower, float& upper, u8 preset) const override;

    /// Builds the table if it is not up to date. False for a unit that the model does not know.
    bool UpdateLUT();

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    CMeasConv meas_;
};

/// Counts of a Tern-family camera to radiance, object signal or temperature by its factory calibration
/// (`CTernFactoryCalReduceObject`), with a model and a table of 16,384 entries for each of four presets.
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

    /// Ranges always go by the formula.
    using CPresetTableConverter::SignalToOutput;
    bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset) override;
    bool OutputToSignal(float value, u16& signal, u8& status, u8 preset) override;
    bool GetCalibratedRange(float& lower, float& upper, u8 preset) const override;

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    CTrnMeasConv meas_[kPresets];
};

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
    bool GetCalibratedRange(float& lower, float& upper, u8 preset) const override;

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    void PrepareTable(u8 preset) override;

    CMrlConv meas_[kPresets];
};

}  // namespace ovix::reduce
