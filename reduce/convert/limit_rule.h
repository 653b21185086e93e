#pragma once

#include "core/types.h"

namespace ovix::reduce {

/// The limits of a measured quantity and what they do to a value: the one rule that all conversions with a status
/// share.
struct SLimitRule {
    double lower = 0;      ///< of the calibrated range; a value at it is outside
    double upper = 0;      ///< of the calibrated range; a value at it is outside
    double underflow = 0;  ///< values below become this
    double overflow = 0;   ///< values above become this

    /// Status bits: 0 strictly inside the calibrated range, 4 overflow, 2 underflow, else 1 with the value kept.
    u8 Apply(double& value) const {
        if (value > lower && value < upper) return 0;
        if (value > overflow) {
            value = overflow;
            return 4;
        }
        if (value < underflow) {
            value = underflow;
            return 2;
        }
        return 1;
    }
};

}  // namespace ovix::reduce
