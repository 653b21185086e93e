#pragma once

#include <cstddef>

#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

/// The one rule of all conversions with a status. Its bits: 0 strictly inside the calibrated range, 4 overflow, 2
/// underflow, else 1 with the value kept.
inline u8 Limit(double& value, const SLimitRule& limits) {
    if (value > limits.lower && value < limits.upper) return 0;
    if (value > limits.overflow) {
        value = limits.overflow;
        return 4;
    }
    if (value < limits.underflow) {
        value = limits.underflow;
        return 2;
    }
    return 1;
}

}  // namespace ovix::reduce

/// Steps of the radiometric models in the widest registers that the processor has, chosen at run time.
namespace ovix::reduce::simd {

/// `Limit` of each value; the bits go to `flags`.
void LimitAll(const SLimitRule& limits, double* values, u8* flags, std::size_t count);

/// Kelvin as the quotient of a constant and a logarithm, in another scale.
struct SLogQuotient {
    double numerator;  ///< kelvin
    double width;      ///< of the logarithm
    double factor;     ///< of the scale
    double offset;     ///< of the scale

    /// numerator / (log(x) * width) * factor - offset. An infinite x gives 0 K.
    double Of(double x) const;
};

/// `Of` each x, narrowed, with the same bits.
void LogQuotients(const SLogQuotient& quotient, const double* x, float* values, std::size_t count);

}  // namespace ovix::reduce::simd
