#pragma once

#include <vector>

#include "core/core.h"

namespace ovix::app {

/// What the two variants of the trailer "TOMZ" do not share.
enum class ETomzVariant { Lapwing, OlderWren };

/// Appends the trailer to a picture, filled up with zeros to whole lines of `width` pixels. The camera's master clock
/// has 40 MHz, it integrates for 1 ms, and its only preset is 0.
void AppendTomzTrailer(std::vector<u8>& picture, u16 width, u64 frame, ETomzVariant variant);

}  // namespace ovix::app
