#pragma once

#include <optional>

#include "reduce/pixels/parts.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

/// How the counts of one preset become radiance, see the order codes in radiance.h.
struct SRadianceLaw {
    const double* coefficients;
    i32 order;
    CBackground background;
    double scale;
    std::optional<SLimitRule> limits = {};
};

/// The law of a record. `pixelsAllowed` false passes its per-pixel backgrounds over.
inline SRadianceLaw RecordLaw(const SRadianceParams& params, bool pixelsAllowed, const SCommonParams& common) {
    const bool perPixel = params.backgrounds && pixelsAllowed;
    return {params.coefficients, params.order,
            perPixel ? CBackground(params.backgrounds) : CBackground(params.background), common.radianceScale};
}

/// Whether the second to fourth power of an integer count is formed in signed 32 bits that wrap.
enum class EPowers : bool { Double, Wrapping };

/// The counts of a part of a selection, ready for a law.
struct SCounts {
    double values[kRunBlock];
    i32 narrow[kRunBlock];  ///< the low 32 bits, where `wraps`
    bool wraps;
    u32 count;

    void Load(STypedData pixels, u32 pixelCount, EPowers powers);
};

/// The radiances of a block of counts. `backgrounds` holds the per-pixel ones of the block; null means the law's single
/// one. False, with nothing written, when the law's order is none.
bool ApplyLaw(const SRadianceLaw& law, const SCounts& counts, const double* backgrounds, double* radiances);

/// Writes radiances to `Flt32` or `Flt64`, from element `at` of the destination (and of the status) on, and holds them
/// against the limits if there are any.
void StoreRadiances(STypedData destination, u8* status, std::size_t at, const double* radiances, u32 count,
                    const std::optional<SLimitRule>& limits);

/// The radiances of a part of a frame of counts. False, with nothing written, when the law's order is none.
template <class Part>
bool RadiancesOf(const Part& part, STypedData source, const SRadianceLaw& law, EPowers powers, double* radiances) {
    SElementScratch gathered;
    TScratch<double> gatheredBackgrounds;
    SCounts counts;
    counts.Load(ViewOf(part, source, gathered), part.count, powers);
    return ApplyLaw(law, counts, part.View(law.background.pixels(), gatheredBackgrounds), radiances);
}

/// The radiances of 16-bit counts, powers in double. False where they depend on the pixel, too, or have no order.
bool RadiancesOf(const u16* counts, u32 count, const SRadianceLaw& law, double* radiances);

/// A selection of counts to radiance; `lawOf(preset)` answers the preset's `SRadianceLaw`. The types are checked by the
/// caller.
template <class Selection, class LawOf>
void ConvertCounts(STypedData destination, u8* status, STypedData source, const u8* presets, const Selection& selection,
                   EPowers powers, const LawOf& lawOf) {
    ForEachPart(selection, presets, [&](const auto& part, u8 preset) {
        const SRadianceLaw law = lawOf(preset);
        double radiances[kRunBlock];
        if (!RadiancesOf(part, source, law, powers, radiances)) return;
        StoreRadiances(destination, status, part.out, radiances, part.count, law.limits);
    });
}

}  // namespace ovix::reduce
