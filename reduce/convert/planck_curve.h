#pragma once

#include <cmath>

namespace ovix::reduce {

/// A Planck curve in three constants: R / (exp(B / T) - F) is the signal of a black body at T kelvin.
///
/// The exponential, and the argument of the logarithm on the way back, never come closer than 0.02 percent to where the
/// curve has its pole, so that no signal gives a negative or infinite temperature.
struct SPlanckCurve {
    double R;
    double B;  ///< kelvin
    double F;

    double Floor() const { return F <= 1.0 ? 1.0002 : F * 1.0002; }

    /// 0 for temperatures that are not above 0, and for those so low that the exponential would overflow.
    double Signal(double kelvin) const {
        if (!(kelvin > 0) || !(B / kelvin < 709.78)) return 0.0;
        const double e = std::exp(B / kelvin);
        const double floor = Floor();
        return R / ((e > floor ? e : floor) - F);
    }

    /// Kelvin; 0 for a signal that is not above 0.
    double Temperature(double signal) const {
        if (!(signal > 0)) return 0.0;
        const double x = R / signal + F;
        const double floor = Floor();
        return B / std::log(x > floor ? x : floor);
    }
};

/// The curve of a calibration that has its constants under these names.
template <class Calib>
SPlanckCurve CurveOf(const Calib& calib) {
    return {calib.planckR, calib.planckB, calib.planckF};
}

}  // namespace ovix::reduce
