#include "reduce/pixels/counts_to_radiance.h"

#include "reduce/pixels/count_tables.h"
#include "reduce/pixels/radiance_law.h"

namespace ovix::reduce {

namespace {

/// `usesPixels(preset)` says whether the per-pixel backgrounds of the preset's record may be used. The single-record
/// shape is the per-preset one with one record and no preset map.
template <class Selection, class UsesPixels>
bool Convert(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
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
    return Convert(
        source, destination, nullptr, selection, [](u8) { return true; }, &params, common);
}

/// The flags are looked at only for presets that occur: the caller's array may be short.
template <class Selection>
bool Each(STypedData source, STypedData destination, const u8* presets, const Selection& selection, const bool* flags,
          const SRadianceParams* params, const SCommonParams& common) {
    return Convert(
        source, destination, presets, selection, [=](u8 p) { return flags && flags[p]; }, params, common);
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

}  // namespace ovix::reduce
