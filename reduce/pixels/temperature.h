#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

/// How the radiance of one preset becomes temperature: by the table if it has two entries or more, else by the
/// polynomial if its order is 1 or more, else by Planck's law over the band of `SCommonParams`. The arrays belong to
/// the caller and may be null.
struct STemperatureParams {
    double* radiances = nullptr;     ///< of the table, ascending
    double* temperatures = nullptr;  ///< beside them, degrees Celsius
    i32 tableSize = 0;               ///< entries of each
    double* coefficients = nullptr;  ///< of the polynomial, a[0] first; radiance to degrees Celsius
    i32 order = 0;                   ///< of the polynomial
};

/// \name Temperature of a single radiance
///
/// There are four models.
///
/// A radiance is divided by `scale`, the emissivity, before it enters a model. Polynomial and table yield degrees
/// Celsius, the other two kelvin; the final step then leads to the scale that `type` names. A `type` that names none
/// means Celsius.
///
/// Nothing tests for division by zero, NaN or infinity: they flow through.
/// @{

/// Not the polynomial of the images, on purpose: the power is squared from term to term, so that the terms are
/// a[1] x, a[2] x^2, a[3] x^4, a[4] x^8 and so on. An order below 1 gives a[0].
OVIX_REDUCE_API double ToTemperatureCoeffs(double radiance, const double* coefficients, i32 order, double scale,
                                           ETempType type);

/// Linear between the entries of a table: `radiances` ascend, `temperatures` stand beside them in degrees Celsius. A
/// radiance outside the table takes the temperature of the nearer end and the answer is `clampResult`; inside it is
/// true. NaN gives NaN. False, with nothing touched, for fewer than two entries.
OVIX_REDUCE_API bool ToTemperatureLookup(double& temperature, double radiance, const double* radiances,
                                         const double* temperatures, i32 tableSize, bool clampResult, double scale,
                                         ETempType type);

/// The inverse of Planck's law at the middle w of a band that is d wide, both in micrometres:
///
///     T = 14388.3 / (w * ln(1 + 11910.66 * d * scale / (w^5 * radiance)))
///
/// The radiance is that of the band, in watts per square centimetre and steradian. A radiance of 0 gives 0 K.
OVIX_REDUCE_API double ToTemperaturePlanck(double radiance, double highWave, double lowWave, double scale,
                                           ETempType type);

/// The three-parameter fit with an offset, x being the scaled radiance:
///
///     T = B / ln(R / (x - O) + F)
///
/// The logarithm is never taken of less than 1.0002, or 1.0002 F where F is above 1. Radiances not above O give 0 K.
/// The four floats are not used.
OVIX_REDUCE_API double ToTemperatureRBF(double radiance, double R, double B, double F, double O, float, float, float,
                                        float, double scale, ETempType type);

/// @}

/// \name Images of radiances to images of temperatures
///
/// Images of radiances to images of temperatures, by the four models above.
///
/// Source and destination are `Flt32` or `Flt64`: any other pair gives false with nothing written. The destination is
/// compact; with `count` pixels from the start it may be the source, when the types are the same. Radiances are divided
/// by `scale`, and temperatures come in the scale that `type` names.
///
/// The per-preset forms take from each array the entry of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all pixels. Where such a form finds a preset that it cannot serve, it stops there
/// with false: the pixels before are done.
/// @{

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

/// @}

/// \name The same by calibration records
///
/// Images of radiances to images of temperatures by calibration records, which choose the model (see
/// `STemperatureParams`). The table clamps, and the polynomial is that of the images, in double throughout.
/// `signalScale` divides the radiance, and the temperature comes in the scale `tempType`.
///
/// Source and destination are `Flt32` or `Flt64`: any other pair gives false with nothing written. The destination is
/// compact.
///
/// The per-preset forms take from `params` the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. Where the flag of a preset in `presetsValid` is not set, its table is passed
/// over and the next model runs; null sets none.
/// @{

/// The first `count` pixels.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u32 count,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u32 count,
                                           const bool* presetsValid, const STemperatureParams* params,
                                           const SCommonParams& common);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u32* indices, u32 count,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets,
                                           const u32* indices, u32 count, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, SArea area, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height,
                                           const TArray<SScanLine>& lines, const STemperatureParams& params,
                                           const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, const TArray<SScanLine>& lines, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                           const u8* mask, u32 maskStride, const STemperatureParams& params,
                                           const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, SArea area, const u8* mask, u32 maskStride,
                                           const bool* presetsValid, const STemperatureParams* params,
                                           const SCommonParams& common);

/// @}

/// \name Images of counts to images of temperatures
///
/// Images of counts to images of temperatures by calibration records: that of `CountsToRadiance` and that of
/// `RadianceToTemperature` in one step, in double between the two whatever the destination is.
///
/// The source is of any numeric type, the destination `Flt32` or `Flt64`, and compact: any other pair gives false with
/// nothing written. Where an order from counts to radiance is none, the pixels stay as they were.
///
/// The per-preset forms take from both arrays the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. Where the flag of a preset in `presetsValid` is not set, its per-pixel
/// backgrounds and its table are passed over; null sets none.
/// @{

/// The first `count` pixels.
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, u32 count,
                                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                                         const SCommonParams& common);
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u32 count,
                                         const bool* presetsValid, const SRadianceParams* toRadiance,
                                         const STemperatureParams* toTemperature, const SCommonParams& common);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u32* indices, u32 count,
                                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                                         const SCommonParams& common);
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets,
                                         const u32* indices, u32 count, const bool* presetsValid,
                                         const SRadianceParams* toRadiance, const STemperatureParams* toTemperature,
                                         const SCommonParams& common);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                         const SRadianceParams& toRadiance, const STemperatureParams& toTemperature,
                                         const SCommonParams& common);
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                         u16 height, SArea area, const bool* presetsValid,
                                         const SRadianceParams* toRadiance, const STemperatureParams* toTemperature,
                                         const SCommonParams& common);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16 height,
                                         const TArray<SScanLine>& lines, const SRadianceParams& toRadiance,
                                         const STemperatureParams& toTemperature, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                         u16 height, const TArray<SScanLine>& lines, const bool* presetsValid,
                                         const SRadianceParams* toRadiance, const STemperatureParams* toTemperature,
                                         const SCommonParams& common);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                         const u8* mask, u32 maskStride, const SRadianceParams& toRadiance,
                                         const STemperatureParams& toTemperature, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                         u16 height, SArea area, const u8* mask, u32 maskStride,
                                         const bool* presetsValid, const SRadianceParams* toRadiance,
                                         const STemperatureParams* toTemperature, const SCommonParams& common);

/// @}

}  // namespace ovix::reduce
