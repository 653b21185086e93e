#include "reduce/pixels/radiance.h"

#include "reduce/pixels/radiance_law.h"

namespace ovix::reduce {

namespace {

/// The forms whose integer powers wrap; the others take powers in double.
constexpr EPowers PowersOf(const SWhole&) { return EPowers::Wrapping; }
constexpr EPowers PowersOf(const SIndexList&) { return EPowers::Wrapping; }
constexpr EPowers PowersOf(const auto&) { return EPowers::Double; }

template <class Selection, class LawOf>
bool Convert(STypedData destination, u8* status, STypedData source, const u8* presets, const Selection& selection,
             const LawOf& lawOf) {
    const bool fromCounts = IsNumeric(source.type) && source.type != UInt64;
    if (!fromCounts || !IsFloating(destination.type)) return false;
    ConvertCounts(destination, status, source, presets, selection, PowersOf(selection), lawOf);
    return true;
}

/// The law for all pixels.
auto One(const double* coefficients, i32 order, CBackground background, double scale) {
    return [=](u8) { return SRadianceLaw{coefficients, order, background, scale}; };
}

/// A law for each preset.
auto Each(const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds, const double* scales) {
    return [=](u8 p) { return SRadianceLaw{coefficients[p], orders[p], backgrounds.Of(p), scales[p]}; };
}

/// Another law with limits added.
template <class LawOf, class LimitsOf>
auto Limited(const LawOf& lawOf, const LimitsOf& limitsOf) {
    return [=](u8 p) {
        SRadianceLaw law = lawOf(p);
        law.limits = limitsOf(p);
        return law;
    };
}

}  // namespace

bool ToRadiance(STypedData destination, STypedData source, u32 count, const double* coefficients, int order,
                CBackground background, double scale) {
    return Convert(destination, nullptr, source, nullptr, SWhole{count}, One(coefficients, order, background, scale));
}

bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u32 count,
                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                const double* scales) {
    return Convert(destination, nullptr, source, presets, SWhole{count},
                   Each(coefficients, orders, backgrounds, scales));
}

bool ToRadiance(STypedData destination, STypedData source, const u32* indices, u32 count, const double* coefficients,
                int order, CBackground background, double scale) {
    return Convert(destination, nullptr, source, nullptr, SIndexList{indices, count},
                   One(coefficients, order, background, scale));
}

bool ToRadiance(STypedData destination, STypedData source, const u8* presets, const u32* indices, u32 count,
                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                const double* scales) {
    return Convert(destination, nullptr, source, presets, SIndexList{indices, count},
                   Each(coefficients, orders, backgrounds, scales));
}

bool ToRadiance(STypedData destination, STypedData source, u16 width, u16, SArea area, const double* coefficients,
                int order, CBackground background, double scale) {
    return Convert(destination, nullptr, source, nullptr, SRectangle{width, area},
                   One(coefficients, order, background, scale));
}

bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                const double* scales) {
    return Convert(destination, nullptr, source, presets, SRectangle{width, area},
                   Each(coefficients, orders, backgrounds, scales));
}

bool ToRadiance(STypedData destination, STypedData source, u16 width, u16, const TArray<SScanLine>& lines,
                const double* coefficients, int order, CBackground background, double scale) {
    return Convert(destination, nullptr, source, nullptr, SLines{width, lines},
                   One(coefficients, order, background, scale));
}

bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16,
                const TArray<SScanLine>& lines, const double* const* coefficients, const i32* orders,
                CPresetBackgrounds backgrounds, const double* scales) {
    return Convert(destination, nullptr, source, presets, SLines{width, lines},
                   Each(coefficients, orders, backgrounds, scales));
}

bool ToRadiance(STypedData destination, STypedData source, u16 width, u16, SArea area, const u8* mask, u32 maskStride,
                const double* coefficients, int order, CBackground background, double scale) {
    return Convert(destination, nullptr, source, nullptr, SMasked{width, area, mask, maskStride},
                   One(coefficients, order, background, scale));
}

bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                const u8* mask, u32 maskStride, const double* const* coefficients, const i32* orders,
                CPresetBackgrounds backgrounds, const double* scales) {
    return Convert(destination, nullptr, source, presets, SMasked{width, area, mask, maskStride},
                   Each(coefficients, orders, backgrounds, scales));
}

bool ToRadiance(STypedData destination, STypedData source, u8* status, u32 count, double warnLow, double warnHigh,
                double clipLow, double clipHigh, const double* coefficients, int order, CBackground background,
                double scale) {
    const SLimitRule limits{warnLow, warnHigh, clipLow, clipHigh};
    return Convert(destination, status, source, nullptr, SWhole{count},
                   Limited(One(coefficients, order, background, scale), [=](u8) { return limits; }));
}

bool ToRadiance(STypedData destination, STypedData source, u8* status, const u32* indices, u32 count, double warnLow,
                double warnHigh, double clipLow, double clipHigh, const double* coefficients, int order,
                CBackground background, double scale) {
    const SLimitRule limits{warnLow, warnHigh, clipLow, clipHigh};
    return Convert(destination, status, source, nullptr, SIndexList{indices, count},
                   Limited(One(coefficients, order, background, scale), [=](u8) { return limits; }));
}

bool ToRadiance(STypedData destination, STypedData source, u8* status, const u8* presets, u32 count,
                const double* warnLows, const double* warnHighs, const double* clipLows, const double* clipHighs,
                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                const double* scales) {
    const auto limits = [=](u8 p) { return SLimitRule{warnLows[p], warnHighs[p], clipLows[p], clipHighs[p]}; };
    return Convert(destination, status, source, presets, SWhole{count},
                   Limited(Each(coefficients, orders, backgrounds, scales), limits));
}

bool ToRadiance(STypedData destination, STypedData source, u8* status, const u8* presets, const u32* indices, u32 count,
                const double* warnLows, const double* warnHighs, const double* clipLows, const double* clipHighs,
                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                const double* scales) {
    const auto limits = [=](u8 p) { return SLimitRule{warnLows[p], warnHighs[p], clipLows[p], clipHighs[p]}; };
    return Convert(destination, status, source, presets, SIndexList{indices, count},
                   Limited(Each(coefficients, orders, backgrounds, scales), limits));
}

}  // namespace ovix::reduce
