#pragma once

#include <string>

#include "core/core.h"

namespace ovix::app {

/// A named rectangle of pixels, not empty and inside its frame.
struct SRegion {
    std::string name;
    u16 x = 0;
    u16 y = 0;
    u16 width = 0;
    u16 height = 0;

    reduce::SArea Area() const { return {y, x, static_cast<u16>(y + height - 1), static_cast<u16>(x + width - 1)}; }
};

}  // namespace ovix::app
