#pragma once

#include "core/array.h"
#include "reduce/convert/planck_curve.h"

namespace ovix::reduce {

/// A parabola c[0] + c[1] * v + c[2] * v * v.
struct SParabola {
    double c[3] = {};

    double At(double v) const { return v * c[2] * v + (v * c[1] + c[0]); }
    /// Fits it to points; false, with nothing changed, when they do not determine it.
    bool Fit(TArray<double>& from, TArray<double>& to);
};

/// Object signal and band radiance of a black body at each whole degree Celsius between two temperatures in kelvin. The
/// floor of the curve does not apply here. False for a range that is empty, below absolute zero, or hotter than any
/// calibration.
bool SampleBlackBody(const SPlanckCurve& curve, float lowKelvin, float highKelvin, double lowWave, double highWave,
                     TArray<double>& signals, TArray<double>& radiances);

}  // namespace ovix::reduce
