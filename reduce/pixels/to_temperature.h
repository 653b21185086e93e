#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Images of radiances to images of temperatures, by the four models of temperature.h.
///
/// Source and destination are `Flt32` or `Flt64`: any other pair gives false with nothing written. The destination is
/// compact; with `count` pixels from the start it may be the source, when the types are the same. Radiances are divided
/// by `scale`, and temperatures come in the scale that `type` names.
///
/// The per-preset forms take from each array the entry of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all pixels. Where such a form finds a preset that it cannot serve, it stops there
/// with false: the pixels before are done.
namespace ovix::reduce {

// The polynomial a[0] + a[1] x + a[2] x^2 and so on. An order below 0 gives 0 degrees Celsius. With a `Flt32`
// destination the orders 0 and above 6 (per preset: all) are summed in single precision. The per-preset forms serve
// presets 0 to 3 with orders from 1 on, and no others.

OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, u32 count,
                                         const double* coefficients, i32 order, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u32 count,
                                         const double* const* coefficients, const i32* orders, double scale,
                                         ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u32* indices, u32 count,
                                         const double* coefficients, i32 order, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets,
                                         const u32* indices, u32 count, const double* const* coefficients,
                                         const i32* orders, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         const double* coefficients, i32 order, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, SArea area, const double* const* coefficients, const i32* orders,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16 height,
                                         const TArray<SScanLine>& lines, const double* coefficients, i32 order,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, const TArray<SScanLine>& lines, const double* const* coefficients,
                                         const i32* orders, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         const u8* mask, u32 maskStride, const double* coefficients, i32 order,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureCoeffs(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, SArea area, const u8* mask, u32 maskStride,
                                         const double* const* coefficients, const i32* orders, double scale,
                                         ETempType type);

// The table. A radiance outside takes the temperature of the nearer end. With `count` pixels and with an index list
// that is asked for by `clamp`, without which the first such pixel stops the walk with false; and a table of fewer than
// two entries gives false at once. Areas, scan lines and masks always clamp, and such a table gives 0 degrees Celsius.

OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, u32 count, const double* radiances,
                                         const double* temperatures, i32 tableSize, bool clamp, double scale,
                                         ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u32 count,
                                         const double* const* radiances, const double* const* temperatures,
                                         const i32* tableSizes, bool clamp, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u32* indices, u32 count,
                                         const double* radiances, const double* temperatures, i32 tableSize, bool clamp,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets,
                                         const u32* indices, u32 count, const double* const* radiances,
                                         const double* const* temperatures, const i32* tableSizes, bool clamp,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         const double* radiances, const double* temperatures, i32 tableSize,
                                         double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, SArea area, const double* const* radiances,
                                         const double* const* temperatures, const i32* tableSizes, double scale,
                                         ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16 height,
                                         const TArray<SScanLine>& lines, const double* radiances,
                                         const double* temperatures, i32 tableSize, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, const TArray<SScanLine>& lines, const double* const* radiances,
                                         const double* const* temperatures, const i32* tableSizes, double scale,
                                         ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         const u8* mask, u32 maskStride, const double* radiances,
                                         const double* temperatures, i32 tableSize, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureLookup(STypedData destination, STypedData source, const u8* presets, u16 width,
                                         u16 height, SArea area, const u8* mask, u32 maskStride,
                                         const double* const* radiances, const double* const* temperatures,
                                         const i32* tableSizes, double scale, ETempType type);

// The inverse of Planck's law over a band, in micrometres.

OVIX_REDUCE_API bool ToTemperaturePlanck(STypedData destination, STypedData source, u32 count, double highWave,
                                         double lowWave, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperaturePlanck(STypedData destination, STypedData source, const u32* indices, u32 count,
                                         double highWave, double lowWave, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         double highWave, double lowWave, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16 height,
                                         const TArray<SScanLine>& lines, double highWave, double lowWave, double scale,
                                         ETempType type);
OVIX_REDUCE_API bool ToTemperaturePlanck(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                         const u8* mask, u32 maskStride, double highWave, double lowWave, double scale,
                                         ETempType type);

// The three-parameter fit with an offset. The floats are not used.

OVIX_REDUCE_API bool ToTemperatureRBF(STypedData destination, STypedData source, u32 count, double R, double B,
                                      double F, double O, float, float, float, float, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureRBF(STypedData destination, STypedData source, const u8* presets, u32 count,
                                      const double* R, const double* B, const double* F, const double* O, const float*,
                                      const float*, const float*, const float*, double scale, ETempType type);
OVIX_REDUCE_API bool ToTemperatureRBF(STypedData destination, STypedData source, const u32* indices, u32 count,
                                      double R, double B, double F, double O, float, float, float, float, double scale,
                                      ETempType type);
OVIX_REDUCE_API bool ToTemperatureRBF(STypedData destination, STypedData source, const u8* presets, const u32* indices,
                                      u32 count, const double* R, const double* B, const double* F, const double* O,
                                      const float*, const float*, const float*, const float*, double scale,
                                      ETempType type);

}  // namespace ovix::reduce
