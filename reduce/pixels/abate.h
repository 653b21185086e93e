#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// The direction in which the presets are tried. Every number but 0 means `AbateFromLast`; the number is stored in
/// files.
enum EAbateMode : u32 {
    AbateFromFirst = 0,  ///< from the first: the first preset whose value is not above its high threshold
    AbateFromLast = 1,   ///< from the last: the first preset whose value is not below its low threshold
};

/// Merges one frame of each preset into one, pixel by pixel: the presets are tried in the given order, each pixel takes
/// the first whose corrected value is inside the threshold, or the last tried one when none is. `status` takes the
/// number of the chosen preset: it is the preset map that the per-preset forms of the other kernels read.
///
/// `sources`, the thresholds and the tables have eight entries, by preset number; an entry of a table may be null.
/// `presetValid` says which presets have a frame at hand; a number in `order` that is not valid is passed over, one
/// that stands twice is tried twice. All frames and the destination are of one type, `UInt16` or `Flt32`, and hold
/// `count` pixels.
///
/// The correction is that of `ApplyNUC`, but for `UInt16` frames the results are rounded half away from zero and the
/// clip is done in single precision, before the rounding:
///
///     tables            without clip            with clip
///     gain and offset   round(g * x) + o        limit or round(g * x + o)
///     gain only         round(g * x)            limit or round(g * x)
///     offset only       x + o                   limit or x + o
///     neither           x                       limit or x
///
/// each then truncated and cut to 16 bits; a limit itself is never rounded. `Flt32` frames are not rounded.
///
/// False, with nothing written, for another type and when no preset is usable. A null status is legal. The kernel keeps
/// no state, takes no memory and runs on the caller's thread.
OVIX_REDUCE_API bool Abate(EDataType type, void* const sources[], u32 count, void* destination, u8* status,
                           const bool presetValid[8], const u8 order[8], const u16 low[8], const u16 high[8],
                           EAbateMode mode, float* const gains[], i16* const offsets[], u32* const replaces[],
                           bool clip, double minimum, double maximum);

}  // namespace ovix::reduce
