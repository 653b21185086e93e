#pragma once

#include "core/api.h"

namespace ovix {

/// Puts the lines of an image that came as two fields, one after the other, in their places: the first
/// (height + 1) / 2 source lines go to lines 0, 2, 4 and so on, the rest to 1, 3, 5 and so on. The last two arguments
/// are not used. Sizes below 1 move nothing. The buffers must not overlap.
OVIX_API void deinterlace(void* dest, const void* source, int width, int height, int bytesPerPixel, int, int);

}  // namespace ovix
