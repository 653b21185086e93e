#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Non-uniformity correction of a frame: gain and offset of each detector pixel, and a map that gives for each pixel
/// the one whose data stand in for it (itself, where nothing is wrong). Any table may be null.
///
/// With x, g and o the source, gain and offset at the pixel's index j:
///
///     gain and offset   g * x + o      gain only   g * x      offset only   x + o      neither   x
///
/// in double precision when the source is `Flt64`, else in single; x + o of an integer source is an integer sum. The
/// result is cast as `NumericCast` tells, so it is truncated, never rounded, when the destination is an integer.
///
/// With `clip` not 0 the result is then limited to minimum .. maximum in the destination's own type: the limits are
/// cast to it as well. A value that has wrapped in the cast is compared as it is; a NaN passes.
///
/// Taken are all numeric types but `UInt64`, on both sides; any other type does nothing. A `count` that is negative
/// when seen as a signed number does nothing. The kernels keep no state, take no memory and run on the caller's thread.
/// In the whole forms source and destination may be one buffer when their elements have one width.
///
/// Which index j is read, with i the running position (that of the destination), k = indices[i], p the preset:
///
///     form                     no map                      map                 map and clip
///     whole                    i                           replace[i]          replace[i]
///     whole, per preset        i                           replaces[p][i]      replaces[p][i]
///     list                     data i, gain and offset k   replace[k]          replace[k]
///     list, per preset         k                           replaces[p][i]      replaces[p][k]
///
/// So the source of a list without a map is compact, and that of all other lists is a whole frame.
namespace ovix::reduce {

/// The first `count` pixels.
OVIX_REDUCE_API void ApplyNUC(STypedData destination, STypedData source, u32 count, float* gain, i16* offset,
                              u32* replace, int clip, double minimum, double maximum);
/// The first `count` pixels, each with the tables of its preset status[i]. A null status is preset 0 for all.
OVIX_REDUCE_API void ApplyNUC(STypedData destination, STypedData source, const u8* status, u32 count,
                              float* const* gains, i16* const* offsets, u32* const* replaces, int clip, double minimum,
                              double maximum);
/// The pixels at `count` frame indices; the destination is compact.
OVIX_REDUCE_API void ApplyNUC(STypedData destination, STypedData source, const u32* indices, u32 count, float* gain,
                              i16* offset, u32* replace, int clip, double minimum, double maximum);
/// The pixels at `count` frame indices, each with the tables of its preset status[k]. A null status is preset 0 for
/// all.
OVIX_REDUCE_API void ApplyNUC(STypedData destination, STypedData source, const u32* indices, const u8* status,
                              u32 count, float* const* gains, i16* const* offsets, u32* const* replaces, int clip,
                              double minimum, double maximum);

}  // namespace ovix::reduce
