#pragma once

#include "core/types.h"

namespace ovix {

/// A rectangle of an image or of its margins; each use says whether its ends are inclusive.
struct RECT {
    i32 left = 0;
    i32 top = 0;
    i32 right = 0;
    i32 bottom = 0;

    friend constexpr bool operator==(const RECT&, const RECT&) = default;
};

}  // namespace ovix
