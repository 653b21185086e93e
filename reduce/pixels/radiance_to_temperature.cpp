#include "reduce/pixels/radiance_to_temperature.h"

#include "reduce/pixels/temperature_law.h"

namespace ovix::reduce {

namespace {

template <class Selection, class LawOf>
bool Convert(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
             const LawOf& lawOf) {
    if (!IsFloating(source.type) || !IsFloating(destination.type)) return false;
    return ConvertRadiances(destination, source, presets, selection, lawOf);
}

template <class Selection>
bool One(STypedData source, STypedData destination, const Selection& selection, const STemperatureParams& params,
         const SCommonParams& common) {
    const STemperatureLaw law = RecordLaw(params, true, common);
    return Convert(source, destination, nullptr, selection, [&](u8) { return law; });
}

template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
          const bool* presetsValid, const STemperatureParams* params, const SCommonParams& common) {
    return Convert(source, destination, presets, selection,
                   [&](u8 p) { return RecordLaw(params[p], presetsValid && presetsValid[p], common); });
}

}  // namespace

bool RadianceToTemperature(STypedData source, STypedData destination, u32 count, const STemperatureParams& params,
                           const SCommonParams& common) {
    return One(source, destination, SWhole{count}, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u32 count,
                           const bool* presetsValid, const STemperatureParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SWhole{count}, presetsValid, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u32* indices, u32 count,
                           const STemperatureParams& params, const SCommonParams& common) {
    return One(source, destination, SIndexList{indices, count}, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, const u32* indices, u32 count,
                           const bool* presetsValid, const STemperatureParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SIndexList{indices, count}, presetsValid, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16, SArea area,
                           const STemperatureParams& params, const SCommonParams& common) {
    return One(source, destination, SRectangle{width, area}, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                           const bool* presetsValid, const STemperatureParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SRectangle{width, area}, presetsValid, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16, const TArray<SScanLine>& lines,
                           const STemperatureParams& params, const SCommonParams& common) {
    return One(source, destination, SLines{width, lines}, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16,
                           const TArray<SScanLine>& lines, const bool* presetsValid, const STemperatureParams* params,
                           const SCommonParams& common) {
    return Each(source, destination, presets, SLines{width, lines}, presetsValid, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16, SArea area, const u8* mask,
                           u32 maskStride, const STemperatureParams& params, const SCommonParams& common) {
    return One(source, destination, SMasked{width, area, mask, maskStride}, params, common);
}

bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                           const u8* mask, u32 maskStride, const bool* presetsValid, const STemperatureParams* params,
                           const SCommonParams& common) {
    return Each(source, destination, presets, SMasked{width, area, mask, maskStride}, presetsValid, params, common);
}

}  // namespace ovix::reduce
