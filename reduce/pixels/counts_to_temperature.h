#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/pixels/radiance_params.h"
#include "reduce/pixels/temperature_params.h"

/// Images of counts to images of temperatures by calibration records: the radiance of counts_to_radiance.h and the
/// model of radiance_to_temperature.h in one step, in double between the two whatever the destination is.
///
/// The source is of any numeric type, the destination `Flt32` or `Flt64`, and compact: any other pair gives false with
/// nothing written. Where an order from counts to radiance is none, the pixels stay as they were.
///
/// The per-preset forms take from both arrays the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. Where the flag of a preset in `presetsValid` is not set, its per-pixel
/// backgrounds and its table are passed over; null sets none.
namespace ovix::reduce {

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

}  // namespace ovix::reduce
