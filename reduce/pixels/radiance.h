#pragma once

#include <type_traits>

#include "core/typed_data.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// The limits of a measured quantity. A value strictly between `lower` and `upper` is good; beyond them it keeps its
/// value until the limits cut it.
struct SLimitRule {
    double lower = 0;      ///< of the calibrated range; a value at it is outside
    double upper = 0;      ///< of the calibrated range; a value at it is outside
    double underflow = 0;  ///< values below become this
    double overflow = 0;   ///< values above become this
};

/// How the counts of one preset become radiance. The arrays belong to the caller.
struct SRadianceParams {
    double* coefficients = nullptr;  ///< a[0] first
    i32 order = 0;                   ///< the order code, see the table below
    double background = 0;           ///< for the orders -1 and -2
    double* backgrounds = nullptr;   ///< one for each frame pixel; replaces `background` if given
};

/// What all presets of a call share.
struct SCommonParams {
    double radianceScale = 1;      ///< factor on the radiance
    double signalScale = 1;        ///< divisor of a radiance before it becomes a temperature
    ETempType tempType = Celsius;  ///< wanted temperature scale
    double highWave = 0;           ///< upper band limit of the Planck model, micrometres
    double lowWave = 0;            ///< lower band limit of the Planck model, micrometres
};

/// \name Radiance of single values and tables
///
/// An order code says how a count c becomes a radiance under the coefficients a, the background b and the scale s:
///
/// | order   | radiance                                              |
/// |---------|-------------------------------------------------------|
/// | 0       | c * s, no coefficient is read                         |
/// | 1 to 4  | (a[0] + a[1] * c + ... up to the power of the order) * s |
/// | above 4 | the same sum by `pow`                                 |
/// | -1      | (c - b) * a[1] * s + a[0]: a[0] is outside the scale  |
/// | -2      | ((c - b) * a[1] + a[0]) * s                           |
/// | below   | no order: nothing is written                          |
///
/// Nothing tests for division by zero, NaN or infinity: they flow through.
/// @{

/// The radiance of a black body at `temperatureC` degrees Celsius in the band from `lowWave` to `highWave` micrometres,
/// times `scale`: Planck's law summed by the trapezoid rule in steps of 0.01 micrometres, to which the band is snapped
/// downward. Watts per square centimetre and steradian. 0 for an empty band.
OVIX_REDUCE_API double Radiance(double temperatureC, double lowWave, double highWave, double scale);

/// The order code for one count, powers in double. 0 for a number that is no order.
OVIX_REDUCE_API double ToRadiance(double counts, const double* coefficients, int order, double background,
                                  double scale);

/// Fills a table for the counts first to last, inclusive: out[i] is the radiance of count first + i. Powers of a count
/// wrap as in `ToRadiance` of whole buffers.
///
/// `status`, if given, is cleared first. With `check` each radiance, rounded to float, is held against the limits as in
/// `ToRadiance` with limits. True; `last` before `first` fills nothing.
OVIX_REDUCE_API bool CountsToRadiance(u16 first, u16 last, float* out, u8* status, bool check, double warnLow,
                                      double warnHigh, double clipLow, double clipHigh, const double* coefficients,
                                      int order, double background, double scale);

/// The inverse of a table of radiance against temperature: `temperatures` ascend, in degrees Celsius, `radiances` stand
/// beside them. Between two entries the result is linear. A temperature outside the table takes the radiance of the
/// nearer end and the answer is `clampResult`; inside it is true. The radiance is multiplied by `scale` in both cases.
/// NaN gives NaN. False, with nothing touched, for fewer than two entries.
OVIX_REDUCE_API bool ToRadianceLookup(double& radiance, double temperature, const double* radiances,
                                      const double* temperatures, i32 count, bool clampResult, double scale,
                                      ETempType type);

/// @}

/// \name Images of counts to images of radiance
///
/// Images of counts to images of radiance, by the order codes above.
///
/// The source is of any numeric type but `UInt64`, the destination `Flt32` or `Flt64`: any other pair gives false with
/// nothing written. The destination is compact. An order that is none gives true, and the pixels stay as they were.
///
/// Powers: with `count` pixels and with an index list, the powers of an integer count are formed in signed 32 bits
/// that wrap, on purpose; so the square of a `UInt16` count turns negative from 46341 on. Floating counts, and areas,
/// scan lines and masks, take powers in double.
///
/// The per-preset forms take from each array the entry of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all pixels.
/// @{

/// The background to subtract: one number for all pixels, or an array with one for each frame pixel, where null counts
/// as 0.
class CBackground {
  public:
    template <class Number>
        requires std::is_arithmetic_v<Number>
    CBackground(Number value) : value_(static_cast<double>(value)) {}  // NOLINT(google-explicit-constructor)
    CBackground(const double* perPixel) : pixels_(perPixel) {}         // NOLINT(google-explicit-constructor)

    const double* pixels() const { return pixels_; }
    double value() const { return value_; }

  private:
    const double* pixels_ = nullptr;
    double value_ = 0;
};

/// The backgrounds of all presets: an array of numbers, or an array of arrays as above; null counts as 0.
class CPresetBackgrounds {
  public:
    CPresetBackgrounds(const double* values) : values_(values) {}         // NOLINT(google-explicit-constructor)
    CPresetBackgrounds(const double* const* arrays) : arrays_(arrays) {}  // NOLINT(google-explicit-constructor)
    CPresetBackgrounds(std::nullptr_t) {}                                 // NOLINT(google-explicit-constructor)

    CBackground Of(u8 preset) const {
        if (arrays_) return arrays_[preset];
        return values_ ? values_[preset] : 0.0;
    }

  private:
    const double* values_ = nullptr;
    const double* const* arrays_ = nullptr;
};

/// The first `count` pixels.
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u32 count, const double* coefficients,
                                int order, CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u32 count,
                                const double* const* coefficients, const i32* orders, CPresetBackgrounds backgrounds,
                                const double* scales);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u32* indices, u32 count,
                                const double* coefficients, int order, CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u8* presets, const u32* indices,
                                u32 count, const double* const* coefficients, const i32* orders,
                                CPresetBackgrounds backgrounds, const double* scales);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                const double* coefficients, int order, CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16 height,
                                SArea area, const double* const* coefficients, const i32* orders,
                                CPresetBackgrounds backgrounds, const double* scales);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u16 width, u16 height,
                                const TArray<SScanLine>& lines, const double* coefficients, int order,
                                CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16 height,
                                const TArray<SScanLine>& lines, const double* const* coefficients, const i32* orders,
                                CPresetBackgrounds backgrounds, const double* scales);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u16 width, u16 height, SArea area,
                                const u8* mask, u32 maskStride, const double* coefficients, int order,
                                CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, const u8* presets, u16 width, u16 height,
                                SArea area, const u8* mask, u32 maskStride, const double* const* coefficients,
                                const i32* orders, CPresetBackgrounds backgrounds, const double* scales);

// With limits. A radiance, rounded to the destination's type, that lies between the warning limits is clean. Otherwise,
// above `clipHigh` it becomes `clipHigh` and its status gains 4; below `clipLow` it becomes `clipLow` and gains 2; else
// it gains 1. The status, compact beside the destination, is ORed into: the caller clears it. It may be null.

OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u8* status, u32 count, double warnLow,
                                double warnHigh, double clipLow, double clipHigh, const double* coefficients, int order,
                                CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u8* status, const u32* indices, u32 count,
                                double warnLow, double warnHigh, double clipLow, double clipHigh,
                                const double* coefficients, int order, CBackground background, double scale);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u8* status, const u8* presets, u32 count,
                                const double* warnLows, const double* warnHighs, const double* clipLows,
                                const double* clipHighs, const double* const* coefficients, const i32* orders,
                                CPresetBackgrounds backgrounds, const double* scales);
OVIX_REDUCE_API bool ToRadiance(STypedData destination, STypedData source, u8* status, const u8* presets,
                                const u32* indices, u32 count, const double* warnLows, const double* warnHighs,
                                const double* clipLows, const double* clipHighs, const double* const* coefficients,
                                const i32* orders, CPresetBackgrounds backgrounds, const double* scales);

/// @}

/// \name The same by calibration records
///
/// Images of counts to images of radiance by calibration records: the scalar `ToRadiance` for each selected pixel with
/// the record's coefficients and order, its per-pixel backgrounds if given, else its background, and `radianceScale`.
///
/// The source is of any numeric type, the destination `Flt32` or `Flt64`, and compact: any other pair gives false with
/// nothing written. An order that is none gives true, and the pixels stay as they were. Powers are in double in all
/// forms.
///
/// The per-preset forms take from `params` the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. The record's per-pixel backgrounds are used only where `usePixelBackgrounds` of
/// the preset is true; a null array of flags uses none.
/// @{

/// The first `count` pixels.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u32 count,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u32 count,
                                      const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u32* indices, u32 count,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, const u32* indices,
                                      u32 count, const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, SArea area, const bool* usePixelBackgrounds,
                                      const SRadianceParams* params, const SCommonParams& common);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height,
                                      const TArray<SScanLine>& lines, const SRadianceParams& params,
                                      const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, const TArray<SScanLine>& lines, const bool* usePixelBackgrounds,
                                      const SRadianceParams* params, const SCommonParams& common);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                      const u8* mask, u32 maskStride, const SRadianceParams& params,
                                      const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, SArea area, const u8* mask, u32 maskStride,
                                      const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

/// @}

}  // namespace ovix::reduce
