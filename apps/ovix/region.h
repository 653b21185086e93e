#pragma once

#include "measure/measure.h"

namespace ovix::app {

/// A named rectangle of pixels, not empty and inside its frame.
using SRegion = measure::SRegion;

inline reduce::SArea AreaOf(const SRegion& r) {
    return {r.y, r.x, static_cast<u16>(r.y + r.height - 1), static_cast<u16>(r.x + r.width - 1)};
}

}  // namespace ovix::app
