#pragma once

#include <cstdint>

#include "support/signal_reference.h"

/// A camera of the Merlin family that never existed, and its formulas written down once more.
namespace ovix::test {

/// Black bodies from 258 to 350 K give signals from 870 to 16,100, for each of the polynomials.
struct SMerlinConstants {
    i32 degree = 1;
    double c[7] = {-330.0, 1.1};
    double signalOffset = 0;
    double planckR = 2.2e8, planckB = 3300.0, planckF = 1.0;
    double atmX = 1.85, atmAlpha1 = 0.0071, atmAlpha2 = 0.0123, atmBeta1 = -0.0024, atmBeta2 = -0.0064;
    float lowTemp = -10.0f, highTemp = 70.0f;
    u16 fitLowSignal = 300, fitHighSignal = 16000;

    template <class Record>
    void CopyTo(Record& r) const {
        r.degree = degree, r.signalOffset = signalOffset;
        for (int i = 0; i < 7; ++i) r.c[i] = c[i];
        r.planckR = planckR, r.planckB = planckB, r.planckF = planckF;
        r.atmX = atmX, r.atmAlpha1 = atmAlpha1, r.atmAlpha2 = atmAlpha2, r.atmBeta1 = atmBeta1, r.atmBeta2 = atmBeta2;
        r.lowTemp = lowTemp, r.highTemp = highTemp;
        r.fitLowSignal = fitLowSignal, r.fitHighSignal = fitHighSignal;
    }
};

class CMerlinReference {
  public:
    CMerlinReference(const SMerlinConstants& camera, const SScene& scene) : c(camera), s(scene) {
        tau = s.atmosphereTrans != 0
                  ? Real{s.atmosphereTrans}
                  : AirTransmission(c, s.atmosphereTemp - 273.15, std::sqrt(Real{s.distance}), s.relativeHumidity);
        K2 = Surroundings(s, tau, [this](Real kelvin) { return Signal(kelvin); });
        kPath = 1 / (s.extOpticsTrans * tau);
        const float high = static_cast<float>(c.highTemp + 273.15), low = static_cast<float>(c.lowTemp + 273.15);
        upper = Signal(high + std::max(2.0f, std::abs(c.highTemp / 50.0f)));
        lower = Signal(low - std::max(2.0f, std::abs(c.lowTemp / 50.0f)));
        overflow = Signal(high + std::max(5.0f, std::abs(c.highTemp / 20.0f)));
        underflow = Signal(low - std::max(5.0f, std::abs(c.lowTemp / 20.0f)));
    }

    Real Signal(Real kelvin) const { return PlanckSignal(c.planckR, c.planckB, c.planckF, kelvin); }
    /// The polynomial and what comes behind it, before the limits.
    Real Radiance(u16 signal) const {
        const Real x = signal, shifted = x - c.signalOffset;
        if (c.degree == -1) return shifted * c.c[1] * kPath + c.c[0];
        if (c.degree == -2) return (shifted * c.c[1] + c.c[0]) * kPath;
        if (c.degree == 0) return x * kPath;
        Real sum = 0;
        for (int i = 0; i <= c.degree; ++i) sum += c.c[i] * Power(signal, i);
        return sum * kPath;
    }
    Real Limited(u16 signal, int& status) const {
        const Real v = static_cast<float>(Radiance(signal));
        status = v > lower && v < upper ? 0 : v > overflow ? 4 : v < underflow ? 2 : 1;
        return std::clamp(v, underflow, overflow);
    }
    Real Kelvin(Real radiance) const {
        return PlanckKelvin(c.planckR, c.planckB, c.planckF, radiance / s.emissivity - K2);
    }
    Real OfKelvin(Real kelvin) const { return (Signal(kelvin) + K2) * s.emissivity; }

    Real tau, K2, kPath;
    Real upper, lower, overflow, underflow;

  private:
    /// Up to the fourth degree the powers are integers of 32 bits, which wrap.
    Real Power(u16 signal, int exponent) const {
        if (c.degree > 4) return std::pow(Real{static_cast<float>(signal)}, exponent);
        std::uint64_t power = 1;
        for (int i = 0; i < exponent; ++i) power *= signal;
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(power));
    }

    SMerlinConstants c;
    SScene s;
};

}  // namespace ovix::test
