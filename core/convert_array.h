#pragma once

#include "core/typed_data.h"

namespace ovix {

/// Element-wise conversion by `NumericCast` between any two numeric types. False, with nothing touched, when either is
/// not numeric. The buffers may be one when their elements have one width, and must not overlap otherwise.
OVIX_API bool ConvertArray(STypedData dest, STypedData source, u32 count);

}  // namespace ovix
