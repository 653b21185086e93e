#include "reduce/pixels/temperature.h"

#include "reduce/pixels/temperature_law.h"

namespace ovix::reduce {

namespace {

template <class Selection, class LawOf>
bool Convert(STypedData destination, STypedData source, const u8* presets, const Selection& selection,
             const LawOf& lawOf) {
    if (!IsFloating(destination.type) || !IsFloating(source.type)) return false;
    return ConvertRadiances(destination, source, presets, selection, lawOf);
}

/// The law for all pixels.
template <class Selection, class Model>
bool One(STypedData destination, STypedData source, const Selection& selection, const Model& model, double scale,
         ETempType type) {
    return Convert(destination, source, nullptr, selection, [&](u8) { return STemperatureLaw{model, scale, type}; });
}

/// A law for each preset; `modelOf` answers the preset's model, or nothing.
template <class Selection, class ModelOf>
bool Each(STypedData destination, STypedData source, const u8* presets, const Selection& selection,
          const ModelOf& modelOf, double scale, ETempType type) {
    return Convert(destination, source, presets, selection, [&](u8 p) -> std::optional<STemperatureLaw> {
        const auto model = modelOf(p);
        if (!model) return {};
        return STemperatureLaw{*model, scale, type};
    });
}

SPolynomialModel Polynomial(STypedData destination, const double* coefficients, i32 order) {
    return {coefficients, order, destination.type == Flt32};
}

/// The per-preset polynomial takes `pow` at each term. It knows four presets, and no constant.
auto Polynomials(STypedData destination, const double* const* coefficients, const i32* orders) {
    return [=](u8 p) -> std::optional<SPolynomialModel> {
        if (p > 3 || orders[p] < 1) return {};
        return SPolynomialModel{coefficients[p], orders[p], destination.type == Flt32, true};
    };
}

STableModel Table(const double* radiances, const double* temperatures, i32 tableSize, bool clamp) {
    return {radiances, temperatures, tableSize < 2 ? 0 : static_cast<u32>(tableSize), clamp};
}

/// Whole buffers and index lists refuse a table of fewer than two entries; the other forms then give 0 degrees Celsius.
auto Tables(const double* const* radiances, const double* const* temperatures, const i32* tableSizes, bool clamp,
            bool refuseShort) {
    return [=](u8 p) -> std::optional<STableModel> {
        if (refuseShort && tableSizes[p] < 2) return {};
        return Table(radiances[p], temperatures[p], tableSizes[p], clamp);
    };
}

auto Fits(const double* R, const double* B, const double* F, const double* O) {
    return [=](u8 p) { return std::optional(SRBFModel{R[p], B[p], F[p], O[p]}); };
}

}  // namespace

bool ToTemperatureCoeffs(STypedData destination, STypedData source, u32 count, const double* coefficients, i32 order,
                         double scale, ETempType type) {
    return One(destination, source, SWhole{count}, Polynomial(destination, coefficients, order), scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u32 count,
                         const double* const* coefficients, const i32* orders, double scale, ETempType type) {
    return Each(destination, source, presets, SWhole{count}, Polynomials(destination, coefficients, orders), scale,
                type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u32* indices, u32 count,
                         const double* coefficients, i32 order, double scale, ETempType type) {
    return One(destination, source, SIndexList{indices, count}, Polynomial(destination, coefficients, order), scale,
               type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, const u32* indices, u32 count,
                         const double* const* coefficients, const i32* orders, double scale, ETempType type) {
    return Each(destination, source, presets, SIndexList{indices, count},
                Polynomials(destination, coefficients, orders), scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16, SArea area,
                         const double* coefficients, i32 order, double scale, ETempType type) {
    return One(destination, source, SRectangle{width, area}, Polynomial(destination, coefficients, order), scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                         const double* const* coefficients, const i32* orders, double scale, ETempType type) {
    return Each(destination, source, presets, SRectangle{width, area}, Polynomials(destination, coefficients, orders),
                scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16, const TArray<SScanLine>& lines,
                         const double* coefficients, i32 order, double scale, ETempType type) {
    return One(destination, source, SLines{width, lines}, Polynomial(destination, coefficients, order), scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width, u16,
                         const TArray<SScanLine>& lines, const double* const* coefficients, const i32* orders,
                         double scale, ETempType type) {
    return Each(destination, source, presets, SLines{width, lines}, Polynomials(destination, coefficients, orders),
                scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16, SArea area, const u8* mask,
                         u32 maskStride, const double* coefficients, i32 order, double scale, ETempType type) {
    return One(destination, source, SMasked{width, area, mask, maskStride},
               Polynomial(destination, coefficients, order), scale, type);
}

bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                         const u8* mask, u32 maskStride, const double* const* coefficients, const i32* orders,
                         double scale, ETempType type) {
    return Each(destination, source, presets, SMasked{width, area, mask, maskStride},
                Polynomials(destination, coefficients, orders), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, u32 count, const double* radiances,
                         const double* temperatures, i32 tableSize, bool clamp, double scale, ETempType type) {
    return tableSize >= 2 &&
           One(destination, source, SWhole{count}, Table(radiances, temperatures, tableSize, clamp), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u32 count,
                         const double* const* radiances, const double* const* temperatures, const i32* tableSizes,
                         bool clamp, double scale, ETempType type) {
    return Each(destination, source, presets, SWhole{count}, Tables(radiances, temperatures, tableSizes, clamp, true),
                scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u32* indices, u32 count,
                         const double* radiances, const double* temperatures, i32 tableSize, bool clamp, double scale,
                         ETempType type) {
    return tableSize >= 2 && One(destination, source, SIndexList{indices, count},
                                 Table(radiances, temperatures, tableSize, clamp), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, const u32* indices, u32 count,
                         const double* const* radiances, const double* const* temperatures, const i32* tableSizes,
                         bool clamp, double scale, ETempType type) {
    return Each(destination, source, presets, SIndexList{indices, count},
                Tables(radiances, temperatures, tableSizes, clamp, true), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16, SArea area, const double* radiances,
                         const double* temperatures, i32 tableSize, double scale, ETempType type) {
    return One(destination, source, SRectangle{width, area}, Table(radiances, temperatures, tableSize, true), scale,
               type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                         const double* const* radiances, const double* const* temperatures, const i32* tableSizes,
                         double scale, ETempType type) {
    return Each(destination, source, presets, SRectangle{width, area},
                Tables(radiances, temperatures, tableSizes, true, false), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16, const TArray<SScanLine>& lines,
                         const double* radiances, const double* temperatures, i32 tableSize, double scale,
                         ETempType type) {
    return One(destination, source, SLines{width, lines}, Table(radiances, temperatures, tableSize, true), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width, u16,
                         const TArray<SScanLine>& lines, const double* const* radiances,
                         const double* const* temperatures, const i32* tableSizes, double scale, ETempType type) {
    return Each(destination, source, presets, SLines{width, lines},
                Tables(radiances, temperatures, tableSizes, true, false), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16, SArea area, const u8* mask,
                         u32 maskStride, const double* radiances, const double* temperatures, i32 tableSize,
                         double scale, ETempType type) {
    return One(destination, source, SMasked{width, area, mask, maskStride},
               Table(radiances, temperatures, tableSize, true), scale, type);
}

bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width, u16, SArea area,
                         const u8* mask, u32 maskStride, const double* const* radiances,
                         const double* const* temperatures, const i32* tableSizes, double scale, ETempType type) {
    return Each(destination, source, presets, SMasked{width, area, mask, maskStride},
                Tables(radiances, temperatures, tableSizes, true, false), scale, type);
}

bool ToTemperaturePlanck(STypedData destination, STypedData source, u32 count, double highWave, double lowWave,
                         double scale, ETempType type) {
    return One(destination, source, SWhole{count}, SPlanckModel{highWave, lowWave}, scale, type);
}

bool ToTemperaturePlanck(STypedData destination, STypedData source, const u32* indices, u32 count, double highWave,
                         double lowWave, double scale, ETempType type) {
    return One(destination, source, SIndexList{indices, count}, SPlanckModel{highWave, lowWave}, scale, type);
}

bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16, SArea area, double highWave,
                         double lowWave, double scale, ETempType type) {
    return One(destination, source, SRectangle{width, area}, SPlanckModel{highWave, lowWave}, scale, type);
}

bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16, const TArray<SScanLine>& lines,
                         double highWave, double lowWave, double scale, ETempType type) {
    return One(destination, source, SLines{width, lines}, SPlanckModel{highWave, lowWave}, scale, type);
}

bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16, SArea area, const u8* mask,
                         u32 maskStride, double highWave, double lowWave, double scale, ETempType type) {
    return One(destination, source, SMasked{width, area, mask, maskStride}, SPlanckModel{highWave, lowWave}, scale,
               type);
}

bool ToTemperatureRBF(STypedData destination, STypedData source, u32 count, double R, double B, double F, double O,
                      float, float, float, float, double scale, ETempType type) {
    return One(destination, source, SWhole{count}, SRBFModel{R, B, F, O}, scale, type);
}

bool ToTemperatureRBF(STypedData destination, STypedData source, const u8* presets, u32 count, const double* R,
                      const double* B, const double* F, const double* O, const float*, const float*, const float*,
                      const float*, double scale, ETempType type) {
    return Each(destination, source, presets, SWhole{count}, Fits(R, B, F, O), scale, type);
}

bool ToTemperatureRBF(STypedData destination, STypedData source, const u32* indices, u32 count, double R, double B,
                      double F, double O, float, float, float, float, double scale, ETempType type) {
    return One(destination, source, SIndexList{indices, count}, SRBFModel{R, B, F, O}, scale, type);
}

bool ToTemperatureRBF(STypedData destination, STypedData source, const u8* presets, const u32* indices, u32 count,
                      const double* R, const double* B, const double* F, const double* O, const float*, const float*,
                      const float*, const float*, double scale, ETempType type) {
    return Each(destination, source, presets, SIndexList{indices, count}, Fits(R, B, F, O), scale, type);
}

}  // namespace ovix::reduce
