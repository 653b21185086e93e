#pragma once

#include "core/typed_data.h"

namespace ovix {

/// Element-wise conversion by `NumericCast` between any two numeric types. False, with nothing touched, when either is
/// not numeric. The buffers may be one when their elements have one width, and must not overlap otherwise.
OVIX_API bool ConvertArray(STypedData dest, STypedData source, u32 count);

/// Converts `count` elements; the rules are those of `ConvertArray`.
using FConvertSpan = void (*)(const void* source, void* dest, std::size_t count);

/// The conversion between two types, for callers that choose once and convert many short spans. Null when either type
/// is not numeric.
OVIX_API FConvertSpan ConvertSpanFunction(EDataType source, EDataType dest);

}  // namespace ovix
