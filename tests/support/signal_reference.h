#pragma once

#include <algorithm>
#include <cmath>

#include "core/types.h"

/// The formulas that the families with an object signal share, written down once more, in long double, from the
/// physics. Steps that are told to happen in single precision happen in it here too.
namespace ovix::test {

struct SScene {
    float emissivity = 1.0f, distance = 2.0f;
    float reflectedTemp = 293.15f, atmosphereTemp = 293.15f, extOpticsTemp = 293.15f;
    float extOpticsTrans = 1.0f, atmosphereTrans = 0.0f, relativeHumidity = 0.3f;
};

using Real = long double;

inline Real PlanckSignal(Real R, Real B, Real F, Real kelvin) { return R / (std::exp(B / kelvin) - F); }
inline Real PlanckKelvin(Real R, Real B, Real F, Real signal) { return signal > 0 ? B / std::log(R / signal + F) : 0; }

/// Of the air between: `celsius` and `root`, the distance's square root, in the family's own precision.
template <class Constants>
Real AirTransmission(const Constants& c, Real celsius, Real root, Real humidity) {
    const Real t = std::clamp(celsius, -30.0L, 90.0L);
    const Real h = std::exp(1.5587L + 0.06939L * t - 0.00027816L * t * t + 6.8455e-7L * t * t * t);
    const Real w = std::min(std::sqrt(h * humidity), 6.2365L);
    return c.atmX * std::exp(-root * (c.atmAlpha1 + c.atmBeta1 * w)) +
           (1 - c.atmX) * std::exp(-root * (c.atmAlpha2 + c.atmBeta2 * w));
}

/// What the camera sees beside the object. `signal(kelvin)` is the object signal of a temperature.
inline Real Surroundings(const SScene& s, Real tau, auto signal) {
    const Real e = s.emissivity, x = s.extOpticsTrans;
    if (!(e > 0)) return 0;
    const Real withAir = (1 - e) / e * signal(s.reflectedTemp) + (1 - tau) / (tau * e) * signal(s.atmosphereTemp);
    return x > 0 && x < 1 ? withAir + (1 - x) / (x * tau * e) * signal(s.extOpticsTemp) : withAir;
}

/// Scene, curve and limits; a family adds how a count becomes pow and calls `SetLimits`.
template <class Constants>
class TSignalReference {
  public:
    Real Signal(Real kelvin) const { return PlanckSignal(c.planckR, c.planckB, c.planckF, kelvin); }
    Real Kelvin(Real signal) const { return PlanckKelvin(c.planckR, c.planckB, c.planckF, signal); }
    Real Pow(Real kelvin) const { return (Signal(kelvin) + K2) / K1; }

    Real tau = 0, K1 = 0, K2 = 0;
    Real overflow, underflow, upper, lower;

  protected:
    TSignalReference(const Constants& camera, const SScene& scene, Real airCelsius) : c(camera), s(scene) {
        tau = s.atmosphereTrans > 0 ? Real{s.atmosphereTrans}
                                    : AirTransmission(c, airCelsius, std::sqrt(s.distance), s.relativeHumidity);
        const Real product = Real{s.emissivity} * tau * s.extOpticsTrans;
        K1 = product > 0 ? 1 / product : product;
        K2 = Surroundings(s, tau, [this](Real kelvin) { return Signal(kelvin); });
    }
    /// The curve itself ends at K2 / K1 below; the calibration's ends lie inside it, and the counts' around both.
    void SetLimits(Real topPow) {
        overflow = std::min(Pow(c.overflowTemp) + 1.01L, topPow);
        underflow = std::max({Pow(c.underflowTemp) - 0.01L, K2 / K1, 1e-6L});
        upper = std::min(overflow, Pow(c.upperTemp) + 1.01L);
        lower = std::max(underflow, Pow(c.lowerTemp) - 0.01L);
    }
    /// The object signal of a pow, limited, and the status of that.
    Real Limited(Real pow, int& status) const {
        status = pow > lower && pow < upper ? 0 : pow > overflow ? 4 : pow < underflow ? 2 : 1;
        return std::clamp(pow, underflow, overflow) * K1 - K2;
    }

    Constants c;
    SScene s;
};

}  // namespace ovix::test
