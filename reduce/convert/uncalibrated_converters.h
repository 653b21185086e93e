#pragma once

#include "reduce/convert/converter_factory.h"

/// Converters that need no calibration.
namespace ovix::reduce {

/// One channel, or the plain mean of all three, of a colour source, as floats.
///
/// The input is of type `Opaque` (three 8-bit channels) or `OpaqueWide` (three 16-bit channels), red first and packed;
/// the output is `Flt32`; anything else is false, with nothing touched. Index lists are honoured in all forms, preset
/// maps are not looked at. Single values are false.
class OVIX_REDUCE_API CRGBConverter : public TConverter<CRGBConverter> {
  public:
    static constexpr const wchar_t* kName = L"RGBConverter";
    static constexpr GUID kID = "{40AB4741-C1C8-4EC4-BC94-CA3131E3DCF6}"_guid;
    /// The four channel units, for a colour base.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    using IConverter::BaseToOutput;
    bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) override;
    bool BaseToOutput(float in, float& out, u8& status, u8 preset) override;
    bool OutputToBase(float in, float& out, u8& status, u8 preset) override;
};

/// Another scale for a source that is stored in a temperature unit. Index lists are honoured in all forms, preset maps
/// are not looked at.
class OVIX_REDUCE_API CTemperatureConverter : public TConverter<CTemperatureConverter> {
  public:
    static constexpr const wchar_t* kName = L"TemperatureConverter";
    static constexpr GUID kID = "{DC1FAB38-0521-4ABB-8EA1-7ED6B6B83592}"_guid;
    /// The base unit itself, if it is a temperature.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    using IConverter::BaseToOutput;
    bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) override;
    /// Always true; a type that is not numeric leaves the output as it was.
    bool BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) override;
    /// The single values set the status to 0 and answer true, and leave `out` alone: who wants one value converted
    /// calls `CMath::ConvertTemperature`, or converts a buffer of one.
    bool BaseToOutput(float in, float& out, u8& status, u8 preset) override;
    bool OutputToBase(float in, float& out, u8& status, u8 preset) override;
};

}  // namespace ovix::reduce
