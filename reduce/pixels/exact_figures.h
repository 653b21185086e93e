#pragma once

#include <algorithm>

#include "core/types.h"

namespace ovix::reduce {

/// What can be found of integer pixels in any order.
template <class T>
struct SExactFigures {
    T minimum;
    T maximum;
    i64 sum;
    u64 squares;

    void Include(const T* pixels, u32 count) {
        for (u32 i = 0; i < count; ++i) {
            minimum = std::min(minimum, pixels[i]);
            maximum = std::max(maximum, pixels[i]);
            sum += pixels[i];
            squares += static_cast<u64>(i64{pixels[i]} * pixels[i]);
        }
    }
};

}  // namespace ovix::reduce
