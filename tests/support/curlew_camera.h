#pragma once

#include <algorithm>
#include <cmath>

#include "core/types.h"

/// A camera of the Curlew family that never existed, and its formulas written down once more, in long double, from the
/// physics: how a count becomes a temperature. Steps that are told to happen in single precision happen in it here too.
namespace ovix::test {

struct SCurlewScene {
    float emissivity = 1.0f, distance = 2.0f;
    float reflectedTemp = 293.15f, atmosphereTemp = 293.15f, extOpticsTemp = 293.15f;
    float extOpticsTrans = 1.0f, atmosphereTrans = 0.0f, relativeHumidity = 0.3f;
};

/// Black bodies from 240 to 480 K give counts from 3,600 to 49,000.
struct SCurlewConstants {
    i32 offset = -1000;
    float gain = 0.02f;
    u16 imgMin = 1, imgMax = 65534;
    float planckR = 18000.0f, planckB = 1450.0f, planckF = 1.0f;
    float atmAlpha1 = 0.0071f, atmAlpha2 = 0.0123f, atmBeta1 = -0.0024f, atmBeta2 = -0.0064f, atmX = 1.85f;
    float overflowTemp = 483.15f, upperTemp = 473.15f, lowerTemp = 253.15f, underflowTemp = 243.15f;
    float radFitHighTemp = 493.15f, radFitLowTemp = 233.15f;

    template <class Record>
    void CopyAdjustTo(Record& record) const {
        record.offset = offset;
        record.gain = gain;
        record.imgMin = imgMin;
        record.imgMax = imgMax;
    }
    template <class Record>
    void CopyCalibTo(Record& record) const {
        record.planckR = planckR;
        record.planckB = planckB;
        record.planckF = planckF;
        record.atmAlpha1 = atmAlpha1;
        record.atmAlpha2 = atmAlpha2;
        record.atmBeta1 = atmBeta1;
        record.atmBeta2 = atmBeta2;
        record.atmX = atmX;
        record.overflowTemp = overflowTemp;
        record.upperTemp = upperTemp;
        record.lowerTemp = lowerTemp;
        record.underflowTemp = underflowTemp;
        record.radFitHighTemp = radFitHighTemp;
        record.radFitLowTemp = radFitLowTemp;
    }
};

class CCurlewReference {
  public:
    using Real = long double;

    CCurlewReference(const SCurlewConstants& camera, const SCurlewScene& scene) : c(camera), s(scene) {
        tau = s.atmosphereTrans > 0 ? Real{s.atmosphereTrans} : Transmission();
        const Real product = Real{s.emissivity} * tau * s.extOpticsTrans;
        K1 = product > 0 ? 1 / product : product;
        const Real e = s.emissivity, x = s.extOpticsTrans;
        if (e > 0) {
            K2 = (1 - e) / e * Signal(s.reflectedTemp) + (1 - tau) / (tau * e) * Signal(s.atmosphereTemp);
            if (x > 0 && x < 1) K2 += (1 - x) / (x * tau * e) * Signal(s.extOpticsTemp);
        }
        // The curve itself ends at K2 / K1 below; the calibration's ends lie inside it, and the counts' around both.
        overflow = std::min(Pow(c.overflowTemp) + 1.01L, PowOfCount(c.imgMax));
        underflow = std::max({Pow(c.underflowTemp) - 0.01L, K2 / K1, 1e-6L});
        upper = std::min(overflow, Pow(c.upperTemp) + 1.01L);
        lower = std::max(underflow, Pow(c.lowerTemp) - 0.01L);
    }

    Real Signal(Real kelvin) const { return c.planckR / (std::exp(c.planckB / kelvin) - c.planckF); }
    Real Kelvin(Real signal) const { return signal > 0 ? c.planckB / std::log(c.planckR / signal + c.planckF) : 0; }
    Real PowOfCount(int count) const { return (count + c.offset) * Real{c.gain}; }
    Real Pow(Real kelvin) const { return (Signal(kelvin) + K2) / K1; }
    /// The object signal of a count, limited, and its status as in a single value.
    Real ObjectSignal(int count, int& status) const {
        Real pow = count ? PowOfCount(count) : 0;
        status = pow > lower && pow < upper ? 0 : pow > overflow ? 4 : pow < underflow ? 2 : 1;
        return std::clamp(pow, underflow, overflow) * K1 - K2;
    }

    Real tau = 0, K1 = 0, K2 = 0;
    Real overflow, underflow, upper, lower;

  private:
    Real Transmission() const {
        const Real t = std::clamp(static_cast<float>(s.atmosphereTemp - 273.15), -30.0f, 90.0f);
        const Real h = std::exp(1.5587L + 0.06939L * t - 0.00027816L * t * t + 6.8455e-7L * t * t * t);
        const Real w = std::min(std::sqrt(h * s.relativeHumidity), 6.2365L);
        const Real root = std::sqrt(s.distance);
        return c.atmX * std::exp(-root * (c.atmAlpha1 + c.atmBeta1 * w)) +
               (1 - c.atmX) * std::exp(-root * (c.atmAlpha2 + c.atmBeta2 * w));
    }

    SCurlewConstants c;
    SCurlewScene s;
};

}  // namespace ovix::test
