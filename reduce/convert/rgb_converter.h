#pragma once

#include "reduce/convert/typed_converter.h"

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

}  // namespace ovix::reduce
