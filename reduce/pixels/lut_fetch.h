#pragma once

#include <cstddef>

#include "core/types.h"

namespace ovix::reduce {

/// The entries of a table at `count` places, one behind the other.
void FetchValues(const float* table, const u16* places, float* values, std::size_t count);
void FetchStatus(const u8* table, const u16* places, u8* status, std::size_t count);

}  // namespace ovix::reduce
