#include "reduce/pixels/counts_to_temperature.h"

#include "reduce/pixels/count_tables.h"
#include "reduce/pixels/radiance_law.h"
#include "reduce/pixels/temperature_law.h"

namespace ovix::reduce {

namespace {

/// How the counts of one preset become temperature.
struct SLaws {
    SRadianceLaw radiance;
    STemperatureLaw temperature;
};

template <class Selection, class LawsOf>
bool Convert(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
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
    return Convert(source, destination, nullptr, selection, [&](u8) { return laws; });
}

template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
          const bool* presetsValid, const SRadianceParams* toRadiance, const STemperatureParams* toTemperature,
          const SCommonParams& common) {
    return Convert(source, destination, presets, selection, [&](u8 p) {
        const bool valid = presetsValid && presetsValid[p];
        return SLaws{RecordLaw(toRadiance[p], valid, common), RecordLaw(toTemperature[p], valid, common)};
    });
}

}  // namespace

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
