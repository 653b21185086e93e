#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "core/typed_data.h"
#include "reduce/convert/meas_conv.h"
#include "reduce/convert/mrl_conv.h"
#include "reduce/convert/radiometry.h"
#include "reduce/convert/trn_meas_conv.h"
#include "support/pixel_reference.h"

/// Cameras that never existed, one of each family with a factory calibration, and how their counts become temperatures,
/// written down once more, in long double, from the physics. Steps that are stated to happen in single precision happen
/// in it here too.
namespace ovix::test {

using CCurlewCal = reduce::CCurlewFactoryCalReduceObject;
using CTernCal = reduce::CTernFactoryCalReduceObject;
using CMerlinCal = reduce::CMerlinFactoryCalReduceObject;

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
inline constexpr ETempType kNoScale = static_cast<ETempType>(9);  ///< kelvin, for most
inline constexpr SScaleStep kScaleSteps[] = {
    {Celsius, 1, 273.15}, {Fahrenheit, 1.8, 459.67}, {Kelvin, 1, 0}, {Rankine, 1.8, 0}, {kNoScale, 1, 0}};

inline void ExpectClose(double value, Real expected, double relative) {
    EXPECT_NEAR(value, static_cast<double>(expected), relative * std::max(1.0, std::abs(value)));
}

inline Real PlanckSignal(Real R, Real B, Real F, Real kelvin) { return R / (std::exp(B / kelvin) - F); }
inline Real PlanckKelvin(Real R, Real B, Real F, Real signal) { return signal > 0 ? B / std::log(R / signal + F) : 0; }

/// Of the air between: `celsius` and `root`, the distance's square root, in the family's own precision.
Real AirTransmission(const auto& c, Real celsius, Real root, Real humidity) {
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

/// Of all families the same air, each in its own precision.
inline void FillAir(auto& c) {
    using T = decltype(c.atmX);
    c.atmX = T(1.85), c.atmAlpha1 = T(0.0071), c.atmAlpha2 = T(0.0123), c.atmBeta1 = T(-0.0024),
    c.atmBeta2 = T(-0.0064);
}

/// Black bodies from 240 to 480 K give counts from 3,600 to 49,000.
inline CCurlewCal CurlewCamera() {
    CCurlewCal c;
    FillAir(c);
    c.offset = -1000, c.gain = 0.02f, c.imgMin = 1, c.imgMax = 65534;
    c.planckR = 18000.0f, c.planckB = 1450.0f, c.planckF = 1.0f;
    c.overflowTemp = 483.15f, c.upperTemp = 473.15f, c.lowerTemp = 253.15f, c.underflowTemp = 243.15f;
    c.radFitHighTemp = 493.15f, c.radFitLowTemp = 233.15f;
    return c;
}

/// Black bodies from 255 to 350 K give counts from 800 to 16,300. The housing warms up: the count is 0.6 percent too
/// small, and 11 counts too great, which it can compensate.
inline CTernCal TernCamera(bool compensates = true) {
    CTernCal c;
    FillAir(c);
    c.adjustGain = 1.1f, c.adjustOffset = 300.0f;
    c.planckR = 2.2e8f, c.planckB = 3300.0f, c.planckF = 1.0f;
    c.overflowTemp = 348.15f, c.upperTemp = 343.15f, c.lowerTemp = 263.15f, c.underflowTemp = 258.15f;
    c.radFitHighTemp = 353.15f, c.radFitLowTemp = 253.15f;
    c.tdriftMode = compensates, c.driftR = 2e8f, c.driftB = 3300.0f, c.driftF = 1.0f, c.drift3 = 20.0f,
    c.drift4 = 0.01f;
    c.drift5 = 5.0f, c.drift6 = 0.02f, c.drift7 = 70.0f, c.drift8 = 0.5f, c.drift9 = 77.0f;
    c.gainDrift0 = 1.0f, c.gainDrift1 = 0.1f, c.gainDrift2 = 0.02f, c.gainDrift3 = 300.0f;
    c.frontPanelTemp = 303.0f, c.airGapTemp = 300.0f, c.dewarTemp = 80.0f;
    return c;
}

/// Black bodies from 258 to 350 K give signals from 870 to 16,100, for each of the polynomials that describe it: in
/// `degree` 1, 2, 5, and around a signal of 8000 -1 and -2.
inline CMerlinCal MerlinCamera(i32 degree = 1) {
    CMerlinCal c;
    FillAir(c);
    c.degree = degree, c.c[0] = -330.0, c.c[1] = 1.1;
    if (degree < 0) c.signalOffset = 8000, c.c[0] = 8470;
    if (degree > 1) c.c[1] = 1.098, c.c[2] = 2e-7;
    if (degree > 4) c.c[5] = 1e-20;
    c.planckR = 2.2e8, c.planckB = 3300.0, c.planckF = 1.0;
    c.lowTemp = -10.0f, c.highTemp = 70.0f, c.fitLowSignal = 300, c.fitHighSignal = 16000;
    return c;
}

/// Scene, curve and limits.
template <class Cal>
class TReference {
  public:
    Real Signal(Real kelvin) const { return PlanckSignal(c.planckR, c.planckB, c.planckF, kelvin); }

    Real tau, K2;
    Real overflow = 0, underflow = 0, upper = 0, lower = 0;

  protected:
    TReference(const Cal& camera, const SScene& scene, Real airCelsius, Real rootOfDistance) : c(camera), s(scene) {
        tau = s.atmosphereTrans > 0 ? Real{s.atmosphereTrans}
                                    : AirTransmission(c, airCelsius, rootOfDistance, s.relativeHumidity);
        K2 = Surroundings(s, tau, [this](Real kelvin) { return Signal(kelvin); });
    }
    Real BlackBody(Real signal) const { return PlanckKelvin(c.planckR, c.planckB, c.planckF, signal); }
    /// A value within the limits, and the status of that.
    Real Limited(Real value, int& status) const {
        status = value > lower && value < upper ? 0 : value > overflow ? 4 : value < underflow ? 2 : 1;
        return std::clamp(value, underflow, overflow);
    }

    Cal c;
    SScene s;
};

/// Limits of pow; a family adds how a count becomes pow and calls `SetLimits`.
template <class Cal>
class TSignalReference : public TReference<Cal> {
    using Base = TReference<Cal>;

  public:
    using Base::K2, Base::Signal;
    Real Kelvin(Real signal) const { return Base::BlackBody(signal); }
    /// The temperature at a limit.
    Real KelvinAt(Real pow) const { return Kelvin(pow * K1 - K2); }

    Real K1 = 0;

  protected:
    TSignalReference(const Cal& camera, const SScene& scene, Real airCelsius)
        : Base(camera, scene, airCelsius, std::sqrt(scene.distance)) {
        const Real product = Real{scene.emissivity} * Base::tau * scene.extOpticsTrans;
        K1 = product > 0 ? 1 / product : product;
    }
    /// The curve itself ends at K2 / K1 below; the calibration's ends lie inside it, and the counts' around both.
    void SetLimits(Real topPow) {
        const auto pow = [this](Real kelvin) { return (Signal(kelvin) + K2) / K1; };
        Base::overflow = std::min(pow(Base::c.overflowTemp) + 1.01L, topPow);
        Base::underflow = std::max({pow(Base::c.underflowTemp) - 0.01L, K2 / K1, 1e-6L});
        Base::upper = std::min(Base::overflow, pow(Base::c.upperTemp) + 1.01L);
        Base::lower = std::max(Base::underflow, pow(Base::c.lowerTemp) - 0.01L);
    }
    Real LimitedSignal(Real pow, int& status) const { return Base::Limited(pow, status) * K1 - K2; }
};

class CCurlewReference : public TSignalReference<CCurlewCal> {
  public:
    CCurlewReference(const CCurlewCal& camera, const SScene& scene)
        : TSignalReference(camera, scene, static_cast<float>(scene.atmosphereTemp - 273.15)) {  // narrowed
        SetLimits(Pow(c.imgMax));
    }

    /// The object signal of a count, limited, and its status as in a single value.
    Real ObjectSignal(int count, int& status) const { return LimitedSignal(count ? Pow(count) : 0, status); }

  private:
    Real Pow(int count) const { return (count + c.offset) * Real{c.gain}; }
};

class CTernReference : public TSignalReference<CTernCal> {
  public:
    CTernReference(const CTernCal& camera, const SScene& scene)
        : TSignalReference(camera, scene, scene.atmosphereTemp - 273.15) {
        if (c.tdriftMode == 1) SetDrift();
        // The limits stay those before the compensation came.
        SetLimits((65535.0L - c.adjustOffset) * c.adjustGain);
    }

    Real ObjectSignal(int count, int& status) const {
        const Real pow = (count * driftGain + driftOffset - c.adjustOffset) * c.adjustGain;
        const Real signal = LimitedSignal(count ? pow : -1, status);
        status |= count ? 0 : 32;
        return signal;
    }

  private:
    void SetDrift() {  // in single precision
        const float g = (1 - std::exp((c.frontPanelTemp - c.gainDrift3) * c.gainDrift2)) * c.gainDrift1 + c.gainDrift0;
        const float gap = c.driftR / (std::exp(c.driftB / c.airGapTemp) - c.driftF) * c.drift4;
        const float panel = c.driftR / (std::exp(c.driftB / c.frontPanelTemp) - c.driftF) * c.drift6;
        const float v = c.drift3 - gap + c.drift5 - panel + c.drift7;
        driftGain = 1.0 / g;
        driftOffset = v + (c.dewarTemp - c.drift9) * c.drift8;
    }

    Real driftGain = 1, driftOffset = 0;
};

/// Whose object signal is a radiance.
class CMerlinReference : public TReference<CMerlinCal> {
  public:
    CMerlinReference(const CMerlinCal& camera, const SScene& scene)
        : TReference(camera, scene, scene.atmosphereTemp - 273.15, std::sqrt(Real{scene.distance})) {
        const float high = static_cast<float>(c.highTemp + 273.15), low = static_cast<float>(c.lowTemp + 273.15);
        upper = Signal(high + std::max(2.0f, std::abs(c.highTemp / 50.0f)));
        lower = Signal(low - std::max(2.0f, std::abs(c.lowTemp / 50.0f)));
        overflow = Signal(high + std::max(5.0f, std::abs(c.highTemp / 20.0f)));
        underflow = Signal(low - std::max(5.0f, std::abs(c.lowTemp / 20.0f)));
    }

    Real ObjectSignal(int signal, int& status) const {
        return Limited(static_cast<float>(Radiance(static_cast<u16>(signal))), status);
    }
    Real Kelvin(Real radiance) const { return BlackBody(radiance / s.emissivity - K2); }
    Real KelvinAt(Real radiance) const { return Kelvin(radiance); }

  private:
    /// The polynomial and what comes behind it. Up to the fourth degree powers are integers of 32 bits, which wrap.
    Real Radiance(u16 signal) const {
        const Real path = 1 / (s.extOpticsTrans * tau), shifted = Real(signal) - c.signalOffset;
        if (c.degree == -1) return shifted * c.c[1] * path + c.c[0];
        if (c.degree == -2) return (shifted * c.c[1] + c.c[0]) * path;
        Real sum = 0;
        u64 power = 1;
        for (int i = 0; i <= c.degree; ++i, power *= signal) {
            const Real cut = static_cast<i32>(static_cast<u32>(power));
            sum += c.c[i] * (c.degree > 4 ? std::pow(Real(signal), i) : cut);
        }
        return sum * path;
    }
};

inline reduce::CMeasConv ModelOf(const CCurlewCal& camera, const SScene& scene) {
    const reduce::SAdjustParams adjust{camera.offset, camera.gain, camera.imgMin, camera.imgMax};
    reduce::SObjectParams object;
    reduce::SCalibParams calib;
    CopySignalCalibration(calib, camera);
    CopyScene(object, scene);
    return reduce::CMeasConv(&adjust, &object, &calib);
}

inline reduce::CTrnMeasConv ModelOf(const CTernCal& c, const SScene& scene) {
    const reduce::_adjust_par_t adjust{2, c.adjustGain, c.adjustOffset};
    reduce::_tdrift_par_t drift{c.tdriftMode, 0, c.driftR, c.driftB, c.driftF, c.drift3};
    drift.drift4 = c.drift4, drift.drift5 = c.drift5, drift.drift6 = c.drift6;
    drift.drift7 = c.drift7, drift.drift8 = c.drift8, drift.drift9 = c.drift9;
    reduce::_object_par_t object;
    reduce::_cal_param_t calib;
    CopySignalCalibration(calib, c);
    CopyScene(object, scene);
    calib.gainDrift0 = c.gainDrift0, calib.gainDrift1 = c.gainDrift1;
    calib.gainDrift2 = c.gainDrift2, calib.gainDrift3 = c.gainDrift3;
    reduce::CTrnMeasConv model(&adjust, &drift, &object, &calib);
    const reduce::_imageinfo_t instrument{c.frontPanelTemp, c.airGapTemp, c.dewarTemp};
    if (c.tdriftMode == 1) model.UpdateFromTempSens(&instrument);
    return model;
}

inline reduce::CMrlConv ModelOf(const CMerlinCal& camera, const SScene& scene) {
    reduce::CObjectParametersReduceObject params;
    CopyScene(params, scene);
    reduce::CMrlConv model;
    model.Init(camera, params);
    return model;
}

}  // namespace ovix::test
