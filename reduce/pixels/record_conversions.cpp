#include "reduce/pixels/count_tables.h"
#include "reduce/pixels/radiance_law.h"
#include "reduce/pixels/temperature_law.h"

/// The conversions by calibration records: those say how the counts of a preset become radiance, and radiances
/// temperature.
namespace ovix::reduce {

namespace {

/// `usesPixels(preset)` says whether the per-pixel backgrounds of the preset's record may be used. The single-record
/// shape is the per-preset one with one record and no preset map.
template <class Selection, class UsesPixels>
bool CountsToRadianceBy(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
                        const UsesPixels& usesPixels, const SRadianceParams* params, const SCommonParams& common) {
    if (!IsNumeric(source.type) || !IsFloating(destination.type)) return false;
    const auto lawOf = [&](u8 p) { return RecordLaw(params[p], usesPixels(p), common); };
    const auto formula = [&](u8 preset, const u16* counts, u32 n, double* values) {
        return RadiancesOf(counts, n, lawOf(preset), values);
    };
    ConvertThroughTables(source, destination, presets, selection, formula, [&](const auto& part, u8 preset) {
        double radiances[kRunBlock];
        if (!RadiancesOf(part, source, lawOf(preset), EPowers::Double, radiances)) return;
        StoreBlock(destination, part.out, radiances, part.count);
    });
    return true;
}

template <class Selection>
bool One(STypedData source, STypedData destination, const Selection& selection, const SRadianceParams& params,
         const SCommonParams& common) {
    return CountsToRadianceBy(
        source, destination, nullptr, selection, [](u8) { return true; }, &params, common);
}

/// The flags are looked at only for presets that occur: the caller's array may be short.
template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection, const bool* flags,
          const SRadianceParams* params, const SCommonParams& common) {
    return CountsToRadianceBy(
        source, destination, presets, selection, [=](u8 p) { return flags && flags[p]; }, params, common);
}

template <class Selection, class LawOf>
bool RadianceToTemperatureBy(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
                             const LawOf& lawOf) {
    if (!IsFloating(source.type) || !IsFloating(destination.type)) return false;
    return ConvertRadiances(destination, source, presets, selection, lawOf);
}

template <class Selection>
bool One(STypedData source, STypedData destination, const Selection& selection, const STemperatureParams& params,
         const SCommonParams& common) {
    const STemperatureLaw law = RecordLaw(params, true, common);
    return RadianceToTemperatureBy(source, destination, nullptr, selection, [&](u8) { return law; });
}

template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
          const bool* presetsValid, const STemperatureParams* params, const SCommonParams& common) {
    return RadianceToTemperatureBy(source, destination, presets, selection,
                                   [&](u8 p) { return RecordLaw(params[p], presetsValid && presetsValid[p], common); });
}

/// How the counts of one preset become temperature.
struct SLaws {
    SRadianceLaw radiance;
    STemperatureLaw temperature;
};

template <class Selection, class LawsOf>
bool CountsToTemperatureBy(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
                           const LawsOf& lawsOf) {
    if (!IsNumeric(source.type) || !IsFloating(destination.type)) return false;
    const auto formula = [&](u8 preset, const u16* counts, u32 n, double* values) {
        const SLaws laws = lawsOf(preset);
        return RadiancesOf(counts, n, laws.radiance, values) && ApplyLaw(laws.temperature, values, n, values) == n;
    };
    ConvertThroughTables(source, destination, presets, selection, formula, [&](const auto& part, u8 preset) {
        const SLaws laws = lawsOf(preset);
        double values[kRunBlock];
        if (!RadiancesOf(part, source, laws.radiance, EPowers::Double, values)) return;
        StoreTemperatures(laws.temperature, values, part.count, destination, part.out);
    });
    return true;
}

template <class Selection>
bool One(STypedData source, STypedData destination, const Selection& selection, const SRadianceParams& toRadiance,
         const STemperatureParams& toTemperature, const SCommonParams& common) {
    const SLaws laws{RecordLaw(toRadiance, true, common), RecordLaw(toTemperature, true, common)};
    return CountsToTemperatureBy(source, destination, nullptr, selection, [&](u8) { return laws; });
}

template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
          const bool* presetsValid, const SRadianceParams* toRadiance, const STemperatureParams* toTemperature,
          const SCommonParams& common) {
    return CountsToTemperatureBy(source, destination, presets, selection, [&](u8 p) {
        const bool valid = presetsValid && presetsValid[p];
        return SLaws{RecordLaw(toRadiance[p], valid, common), RecordLaw(toTemperature[p], valid, common)};
    });
}

}  // namespace

bool CountsToRadiance(STypedData source, STypedData destination, u32 count, const SRadianceParams& params,
                      const SCommonParams& common) {
    return One(source, destination, SWhole{count}, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u32 count,
                      const bool* usePixelBackgrounds, const SRadianceParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SWhole{count}, usePixelBackgrounds, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u32* indices, u32 count,
                      const SRadianceParams& params, const SCommonParams& common) {
    return One(source, destination, SIndexList{indices, count}, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, const u32* indices, u32 count,
                      const bool* usePixelBackgrounds, const SRadianceParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SIndexList{indices, count}, usePixelBackgrounds, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16, SArea area,
                      const SRadianceParams& params, const SCommonParams& common) {
    return One(source, destination, SRectangle{width, area}, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                      const bool* usePixelBackgrounds, const SRadianceParams* params, const SCommonParams& common) {
    return Each(source, destination, presets, SRectangle{width, area}, usePixelBackgrounds, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16, const TArray<SScanLine>& lines,
                      const SRadianceParams& params, const SCommonParams& common) {
    return One(source, destination, SLines{width, lines}, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width, u16,
                      const TArray<SScanLine>& lines, const bool* usePixelBackgrounds, const SRadianceParams* params,
                      const SCommonParams& common) {
    return Each(source, destination, presets, SLines{width, lines}, usePixelBackgrounds, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16, SArea area, const u8* mask,
                      u32 maskStride, const SRadianceParams& params, const SCommonParams& common) {
    return One(source, destination, SMasked{width, area, mask, maskStride}, params, common);
}

bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                      const u8* mask, u32 maskStride, const bool* usePixelBackgrounds, const SRadianceParams* params,
                      const SCommonParams& common) {
    return Each(source, destination, presets, SMasked{width, area, mask, maskStride}, usePixelBackgrounds, params,
                common);
}

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

bool CountsToTemperature(STypedData source, STypedData destination, u32 count, const SRadianceParams& toRadiance,
                         const STemperatureParams& toTemperature, const SCommonParams& common) {
    return One(source, destination, SWhole{count}, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u32 count,
                         const bool* presetsValid, const SRadianceParams* toRadiance,
                         const STemperatureParams* toTemperature, const SCommonParams& common) {
    return Each(source, destination, presets, SWhole{count}, presetsValid, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u32* indices, u32 count,
                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                         const SCommonParams& common) {
    return One(source, destination, SIndexList{indices, count}, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, const u32* indices, u32 count,
                         const bool* presetsValid, const SRadianceParams* toRadiance,
                         const STemperatureParams* toTemperature, const SCommonParams& common) {
    return Each(source, destination, presets, SIndexList{indices, count}, presetsValid, toRadiance, toTemperature,
                common);
}

bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16, SArea area,
                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                         const SCommonParams& common) {
    return One(source, destination, SRectangle{width, area}, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                         const bool* presetsValid, const SRadianceParams* toRadiance,
                         const STemperatureParams* toTemperature, const SCommonParams& common) {
    return Each(source, destination, presets, SRectangle{width, area}, presetsValid, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16, const TArray<SScanLine>& lines,
                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                         const SCommonParams& common) {
    return One(source, destination, SLines{width, lines}, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16,
                         const TArray<SScanLine>& lines, const bool* presetsValid, const SRadianceParams* toRadiance,
                         const STemperatureParams* toTemperature, const SCommonParams& common) {
    return Each(source, destination, presets, SLines{width, lines}, presetsValid, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16, SArea area, const u8* mask,
                         u32 maskStride, const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                         const SCommonParams& common) {
    return One(source, destination, SMasked{width, area, mask, maskStride}, toRadiance, toTemperature, common);
}

bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width, u16, SArea area,
                         const u8* mask, u32 maskStride, const bool* presetsValid, const SRadianceParams* toRadiance,
                         const STemperatureParams* toTemperature, const SCommonParams& common) {
    return Each(source, destination, presets, SMasked{width, area, mask, maskStride}, presetsValid, toRadiance,
                toTemperature, common);
}

}  // namespace ovix::reduce
