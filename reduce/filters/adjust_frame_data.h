#pragma once

#include "core/guid.h"
#include "core/typed_data.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// Makes the frame that an application wants of the frame that a grabber or a camera delivers: margins are cut away,
/// raw counts shifted and masked, pictures mirrored (left to right) and flipped (top to bottom), the two fields of an
/// interlaced one merged, YUV turned into RGB. `width` and `height`, in pixels, are those of the result.
///
/// What is done follows from the type on which `pixelType` stands; a type on none of the three leaves `dest` alone.
/// - `rootIRType`: words of 16 bits, each shifted left by the absolute value of `shift`, then cut to 16 bits, then
///   masked by the low bits of `mask`. `rect.left` and `rect.right` are the words of a source line beside the wanted
///   ones, `rect.top` the first line to take; `rect.bottom` is not read. Only without mirroring and flipping do source
///   lines have those margins; otherwise they are taken to be `width` words long. `deinterlace` is not looked at.
/// - `rootRGB24Type`: pixels of 3 bytes; `rect`, `shift` and `mask` are not looked at.
/// - `rootYUVType`: 2 bytes a pixel in the order Y0, U, Y1, V, whatever the type's name, to red, green and blue; the
///   same are not looked at. Of an odd number of pixels in a run one stays unwritten: the last of the run, or the first
///   when mirrored. A run is a line, or the whole picture when nothing is rearranged.
///
/// Nothing is checked: `dest` must hold the result, `source` every word that the choice of flags leads to (with `top`
/// above 0, mirroring or flipping leads ahead of the frame's start unless `left` makes up for it), and they must not
/// overlap. Both may stand at any address. A width or height below 1 does nothing.
OVIX_REDUCE_API void AdjustFrameData(void* dest, const void* source, i32 width, i32 height, GUID pixelType, RECT rect,
                                     i32 shift, i32 mask, bool deinterlace, bool mirror, bool flip);

/// The words of the source, by number, that the adjustment of counts reads: from `first` up to, not including, `end`.
/// Both may lie outside the frame. Nothing is read for a width or height below 1.
struct SAdjustedWords {
    i64 first = 0;
    i64 end = 0;
};
OVIX_REDUCE_API SAdjustedWords AdjustedWords(i32 width, i32 height, RECT rect, bool mirror, bool flip);

/// The base types of the two paths for pictures. No decoder of the library registers a type under them.
inline constexpr GUID rootRGB24Type = "{A62531FA-1FB9-4384-A0B5-E88FE59BB9B3}"_guid;
inline constexpr GUID rootYUVType = "{30983C2C-6406-41A5-83DE-C5607B7A23A5}"_guid;

}  // namespace ovix::reduce
