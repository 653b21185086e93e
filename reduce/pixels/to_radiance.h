#pragma once

#include <type_traits>

#include "core/typed_data.h"
#include "reduce/api.h"

/// Images of counts to images of radiance, by the order codes of radiance.h.
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
namespace ovix::reduce {

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

}  // namespace ovix::reduce
