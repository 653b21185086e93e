#pragma once

#include <cmath>
#include <memory>

#include "core/temperature_scale.h"
#include "core/visit.h"
#include "reduce/convert/model_state.h"

/// The formulas that the measurement models share.
namespace ovix::reduce {

struct SRadianceLaw;

/// Signals that go through the steps of a model together, in cache.
inline constexpr u32 kSignalBlock = 512;

/// Whether a law asks for the power function, which costs far more than all other steps together.
bool TakesPowers(const SRadianceLaw& law);
/// What such a law says of the first `count` of the counts but for its scale, on all processors: times the scale these
/// are its radiances, bit by bit.
std::shared_ptr<const double[]> UnscaledRadiances(SRadianceLaw law, u32 count);

/// The nearest whole number, halves away from zero; beyond +-1e18, where halves no longer exist, the value is taken as
/// it stands. NaN and what 64 bits do not hold give the least one.
constexpr i64 RoundToInteger(double value) {
    if (value > -1e18 && value < 1e18) value += value < 0 ? -0.5 : 0.5;
    return TruncateTo<i64>(value);
}

/// What keeps a curve 0.02 percent away from its pole, so that no signal gives a negative or infinite temperature: the
/// exponential, and the argument of the logarithm on the way back, never come below this.
inline double FloorOf(const SPlanckCurve& curve) { return curve.F <= 1.0 ? 1.0002 : curve.F * 1.0002; }

/// 0 for temperatures that are not above 0, and for those so low that the exponential would overflow.
inline double SignalOf(const SPlanckCurve& curve, double kelvin) {
    if (!(kelvin > 0) || !(curve.B / kelvin < 709.78)) return 0.0;
    const double e = std::exp(curve.B / kelvin);
    const double floor = FloorOf(curve);
    return curve.R / ((e > floor ? e : floor) - curve.F);
}

/// Kelvin; 0 for a signal that is not above 0.
inline double KelvinOf(const SPlanckCurve& curve, double signal) {
    if (!(signal > 0)) return 0.0;
    const double x = curve.R / signal + curve.F;
    const double floor = FloorOf(curve);
    return curve.B / std::log(x > floor ? x : floor);
}

/// Object signals to temperatures in a scale, narrowed, in the widest registers that the processor has, with the bits
/// of `to.FromKelvin(KelvinOf(curve, signal))`.
void TemperaturesOf(const SPlanckCurve& curve, const STemperatureScale& to, const double* signals, u32 count,
                    float* values);

/// The curve of a calibration that has its constants under these names.
template <class Calib>
SPlanckCurve CurveOf(const Calib& calib) {
    return {calib.planckR, calib.planckB, calib.planckF};
}

inline double At(const SParabola& p, double v) { return v * p.c[2] * v + (v * p.c[1] + p.c[0]); }

/// Fits radiance at each whole degree Celsius between two temperatures in kelvin. The floor of the curve does not apply
/// here. False, with nothing changed, for a range that is empty, below absolute zero, or hotter than any calibration,
/// and when the points do not determine the fit.
bool MakeFit(SRadianceFit& fit, const SPlanckCurve& curve, float lowKelvin, float highKelvin);

/// The attenuation of the air path in two exponential terms of the square root of the distance, each with a part for
/// dry air and one for its water content.
struct SAtmosphere {
    double alpha1, alpha2;  ///< without water
    double beta1, beta2;    ///< per water content
    double x;               ///< weight of the first term

    /// The transmission, 0.4 to 1, of a path of `distance` with the given square root, through air of `celsius`
    /// (limited to -30 to 90) and a relative humidity from 0 to 1. Each family takes temperature and root in its own
    /// precision. Constants that would let the transmission rise with the distance give 0.4.
    double Transmission(double celsius, double distance, double rootOfDistance, double relativeHumidity) const;
};

/// The atmosphere of a calibration that has its constants under these names.
template <class Calib>
SAtmosphere AtmosphereOf(const Calib& calib) {
    return {calib.atmAlpha1, calib.atmAlpha2, calib.atmBeta1, calib.atmBeta2, calib.atmX};
}

/// What weakens an object's signal on its way into the camera: each number is the part that is left, 0 to 1.
struct SOpticalPath {
    double emissivity;
    double air;
    double optics;  ///< external ones, before the lens

    /// What a camera sees beside the object, as an object signal: reflected surroundings, the glow of the air and that
    /// of the optics, each given by the object signal of its temperature. Where nothing of the object comes through,
    /// what stands further on is left out; so are optics that are wholly transparent.
    double Surroundings(double reflectedSignal, double airSignal, double opticsSignal) const;
};

/// Copies the eight values of a scene between records that have them under the same names.
template <class To, class From>
void CopyScene(To& to, const From& from) {
    to.emissivity = from.emissivity;
    to.distance = from.distance;
    to.reflectedTemp = from.reflectedTemp;
    to.atmosphereTemp = from.atmosphereTemp;
    to.extOpticsTemp = from.extOpticsTemp;
    to.extOpticsTrans = from.extOpticsTrans;
    to.atmosphereTrans = from.atmosphereTrans;
    to.relativeHumidity = from.relativeHumidity;
}

/// Copies the calibration that the models with an object signal share, between records that have it under the same
/// names.
template <class To, class From>
void CopySignalCalibration(To& to, const From& from) {
    to.planckR = from.planckR;
    to.planckB = from.planckB;
    to.planckF = from.planckF;
    to.atmAlpha1 = from.atmAlpha1;
    to.atmAlpha2 = from.atmAlpha2;
    to.atmBeta1 = from.atmBeta1;
    to.atmBeta2 = from.atmBeta2;
    to.atmX = from.atmX;
    to.overflowTemp = from.overflowTemp;
    to.upperTemp = from.upperTemp;
    to.lowerTemp = from.lowerTemp;
    to.underflowTemp = from.underflowTemp;
    to.radFitHighTemp = from.radFitHighTemp;
    to.radFitLowTemp = from.radFitLowTemp;
}

}  // namespace ovix::reduce
