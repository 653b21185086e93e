#pragma once

#include <cstddef>

#include "reduce/convert/radiometry.h"

namespace ovix::reduce::simd {

/// static_cast<float>(to.FromKelvin(KelvinOf(curve, signal))) of each object signal, in the widest registers that the
/// processor has, with the same bits.
void Temperatures(const SPlanckCurve& curve, const SKelvinScale& to, const double* signals, float* values,
                  std::size_t count);

}  // namespace ovix::reduce::simd
