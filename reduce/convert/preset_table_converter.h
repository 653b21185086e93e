#pragma once

#include "reduce/convert/table_converter.h"

namespace ovix::reduce {

/// The body of the converters of a family whose presets have a model, and a table, each.
///
/// With a preset map each pixel goes through the table of its own preset, whatever the active one is. A preset that is
/// not enabled has the table of a model without calibration. A map that names a preset beyond the family's gives false,
/// with no pixel touched.
class OVIX_REDUCE_API CPresetTableConverter : public CTableConverter {
  public:
    using CTableConverter::BaseToOutput;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                      STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) override;

    /// Builds the preset's table if it is not up to date. False for a preset that the family does not have, and for a
    /// unit that its model does not know.
    bool UpdateLUT(u8 preset);

  protected:
    CPresetTableConverter(u16 topSignal, u8 presetCount);

  private:
    template <class... Form>
    bool ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, const Form&... form);
};

}  // namespace ovix::reduce
