#pragma once

#include "core/array.h"
#include "reduce/api.h"
#include "reduce/convert/planck_curve.h"

namespace ovix::reduce {

/// A parabola c[0] + c[1] * v + c[2] * v * v.
struct SParabola {
    double c[3] = {};

    double At(double v) const { return v * c[2] * v + (v * c[1] + c[0]); }
    /// Fits it to points; false, with nothing changed, when they do not determine it.
    bool Fit(TArray<double>& from, TArray<double>& to);
};

/// Radiance in a band of wavelengths against the object signal of a black body, as a parabola, and for families that
/// convert radiances back the parabola of the other way, fitted on the same points.
class OVIX_REDUCE_API CRadianceFit {
  public:
    enum class EWays : bool { Forward, Both };

    /// The band in micrometres.
    CRadianceFit(double lowWave, double highWave, EWays ways)
        : lowWave_(lowWave), highWave_(highWave), bothWays_(ways == EWays::Both) {}

    /// Whether the last fit was of this very curve.
    bool IsOf(const SPlanckCurve& curve) const {
        return valid_ && curve_.R == curve.R && curve_.B == curve.B && curve_.F == curve.F;
    }
    /// Fits at each whole degree Celsius between two temperatures in kelvin. The floor of the curve does not apply
    /// here. False, with nothing changed, for a range that is empty, below absolute zero, or hotter than any
    /// calibration, and when the points do not determine the fit.
    bool Make(const SPlanckCurve& curve, float lowKelvin, float highKelvin);

    /// Of object signal. All zeros before the first fit.
    const SParabola& radiance() const { return radiance_; }
    /// Of radiance.
    const SParabola& signal() const { return signal_; }

  private:
    double lowWave_;
    double highWave_;
    bool bothWays_;
    bool valid_ = false;
    SPlanckCurve curve_ = {};
    SParabola radiance_;
    SParabola signal_;
};

}  // namespace ovix::reduce
