#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/typed_data.h"

/// The formulas that the families with an object signal share, written down once more, in long double, from the
/// physics. Steps that are stated to happen in single precision happen in it here too.
namespace ovix::test {

struct SScene {
    float emissivity = 1.0f, distance = 2.0f;
    float reflectedTemp = 293.15f, atmosphereTemp = 293.15f, extOpticsTemp = 293.15f;
    float extOpticsTrans = 1.0f, atmosphereTrans = 0.0f, relativeHumidity = 0.3f;
};

/// Emissivity 1, nothing in between: the object signal is the pow.
inline constexpr SScene kPlainScene{.atmosphereTrans = 1.0f};

/// A kelvin value times the factor, less the offset.
struct SScaleStep {
    ETempType scale;
    double factor, offset;
};
inline constexpr SScaleStep kScaleSteps[] = {
    {Celsius, 1, 273.15}, {Fahrenheit, 1.8, 459.67}, {Kelvin, 1, 0}, {Rankine, 1.8, 0}};

using Real = long double;

inline void ExpectClose(double value, Real expected, double relative) {
    EXPECT_NEAR(value, static_cast<double>(expected), relative * std::max(1.0, std::abs(value)));
}

/// Planck's law between two wavelengths in micrometres, by the midpoint rule.
inline double BandRadiance(double celsius, double low, double high) {
    double sum = 0;
    for (double w = low + 0.0005; w < high; w += 0.001) {
        sum += 0.001 * 11910.7 / (std::pow(w, 5) * (std::exp(14388.4 / (w * (celsius + 273.15))) - 1));
    }
    return sum;
}

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

/// The calibrated range that a converter states: all results strictly inside have the status 0 and no others, and its
/// ends in the output scale are those expected.
inline void ExpectRange(const auto& converter, const auto& values, const auto& status, Real low, Real high) {
    float lower = -1, upper = -1;
    ASSERT_TRUE(converter.GetCalibratedRange(lower, upper, 255));
    EXPECT_NEAR(lower, static_cast<double>(low), 1e-4);
    EXPECT_NEAR(upper, static_cast<double>(high), 1e-4);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(status[i] == 0, lower < values[i] && values[i] < upper) << i;
    }
    EXPECT_FALSE(converter.GetCalibratedRange(lower, upper, 7));  // not enabled
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

/// The constants of the scene, the limits, and the way of a count to its temperature and back. `Count` is what the
/// model takes for a count where it tells the status. Answers how far a temperature came back beside itself at most, in
/// steps of a count.
template <class Count>
double ExpectFollows(const auto& model, const auto& reference, int lastCount, double lowKelvin, double highKelvin) {
    ExpectClose(model.getUsedAtmTao(), reference.tau, 1e-13);
    ExpectClose(model.getK1(), reference.K1, 1e-13);
    ExpectClose(model.getK2(), reference.K2, 1e-12);
    ExpectClose(model.getPowOverflow(), reference.overflow, 1e-12);
    ExpectClose(model.getPowUnderflow(), reference.underflow, 1e-12);
    const auto kelvinOf = [&](i32 img) { return model.imgToTemp(img, nullptr); };
    double before = 0, largest = 0;
    for (i32 img = 0; img <= lastCount; img += 101) {
        int expected = 0;
        u8 status = 99;
        const Real signal = reference.ObjectSignal(img, expected);
        ExpectClose(model.imgToObjectSignal(static_cast<Count>(img), &status), signal, 1e-11);
        EXPECT_EQ(status, expected) << img;
        ExpectClose(kelvinOf(img), reference.Kelvin(signal), 1e-11);  // limited all the same
        EXPECT_TRUE(kelvinOf(img) > before || expected & 6) << img;
        before = kelvinOf(img);
    }
    for (double kelvin = lowKelvin; kelvin < highKelvin; kelvin += 0.37) {
        const u16 img = model.tempToImg(kelvin);
        const double steps = std::abs(kelvinOf(img) - kelvin) / (kelvinOf(img + 1) - kelvinOf(img));
        EXPECT_LT(steps, 0.51) << kelvin;
        largest = std::max(largest, steps);
        ExpectClose(model.objSigToTemp(model.tempToObjSig(kelvin)), kelvin, 1e-12);
        ExpectClose(model.powToObjSig(model.objSigToPow(kelvin)), kelvin, 1e-12);
    }
    return largest;
}

}  // namespace ovix::test
