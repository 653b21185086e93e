#include "reduce/convert/preset_table_converter.h"

namespace ovix::reduce {

CPresetTableConverter::CPresetTableConverter(u16 topSignal, u8 presetCount) : CTableConverter(topSignal, presetCount) {}

bool CPresetTableConverter::UpdateLUT(u8 preset) { return UpdateTable(preset); }

template <class... Form>
bool CPresetTableConverter::ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, const Form&... form) {
    return ThroughTables([](u8) { return true; }, in, presetMap, out, status, form...);
}

bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area,
                                         const u8* areaMask, u32 stride, STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, w, h, area, areaMask, stride);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h,
                                         const TArray<SScanLine>& lines, STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, w, h, lines);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                                         u8* status) {
    return ByMap(in, presetMap, out, status, w, h, area);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count,
                                         STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, indices, count);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) {
    return ByMap(in, presetMap, out, status, count);
}

}  // namespace ovix::reduce
