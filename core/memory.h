#pragma once

#include "core/api.h"
#include "core/types.h"

namespace ovix {

/// The allocator of reference counts and array storage. All modules share it, so that one may free what another
/// allocated. Answers null when memory fails.
OVIX_API void* Alloc(std::size_t size);
OVIX_API void* Realloc(void* pointer, std::size_t size);
/// Null is allowed.
OVIX_API void Free(void* pointer);

}  // namespace ovix
