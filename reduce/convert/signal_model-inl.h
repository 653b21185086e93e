#pragma once

#include <algorithm>
#include <utility>

#include "reduce/convert/radiometry.h"
#include "reduce/convert/signal_model.h"

/// The bodies of `TSignalModel`, for the two models that instantiate it.
namespace ovix::reduce {

inline constexpr double kNoPow = 100000.0;  ///< the pow of nothing valid, and the greatest one
inline constexpr double kLeastPow = 1e-06;

/// Object signals as values of a unit: `RadianceFactory`, `TemperatureFactory`, `ObjectSignal`.
struct SSignalUnit {
    EUnit unit;
    STemperatureScale scale;
    SPlanckCurve curve;
    SParabola radiance;

    double ValueOf(double signal) const {
        if (unit == TemperatureFactory) return scale.FromKelvin(KelvinOf(curve, signal));
        return unit == RadianceFactory ? At(radiance, signal) : signal;
    }
    /// The same narrowed, for a block.
    void ValuesOf(const double* signals, u32 count, float* values) const {
        if (unit == TemperatureFactory) return TemperaturesOf(curve, scale, signals, count, values);
        const SParabola fit = radiance;
        const auto each = [=](auto f) {
            std::transform(signals, signals + count, values, [=](double s) { return static_cast<float>(f(s)); });
        };
        if (unit == RadianceFactory) return each([=](double s) { return At(fit, s); });
        each([](double s) { return s; });
    }
};

template <class Object, class Calib>
TSignalModel<Object, Calib>::TSignalModel(double lowWave, double highWave, bool bothWays)
    : fit_{lowWave, highWave, bothWays, false, {}, {}, {}} {}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::setObjPar(const Object* object) {
    objValid_ = object != nullptr;
    object_ = object ? *object : Object{};
    Refresh();
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::ChangeScene(float emissivity, float distance) {
    Object object = object_;
    object.emissivity = emissivity;
    object.distance = distance;
    setObjPar(&object);
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::setDefObjPar() {
    Object object{};
    object.emissivity = 1.0f;
    object.reflectedTemp = object.atmosphereTemp = object.extOpticsTemp = 293.15f;
    object.extOpticsTrans = 1.0f;
    setObjPar(&object);
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::setCalibPar(const Calib* calib) {
    calibValid_ = calib != nullptr;
    calib_ = calib ? *calib : Calib{};
    if (calibValid_) Refresh();
}

template <class Object, class Calib>
bool TSignalModel<Object, Calib>::setClipOn(bool on) {
    clipOn_ = on;
    Refresh();
    return true;
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::setMeasAmbObjSig(double signal) {
    return std::exchange(measAmbObjSig_, signal);
}

template <class Object, class Calib>
bool TSignalModel<Object, Calib>::InitRad(double R, double B, double F) {
    if (fit_.valid && fit_.curve.R == R && fit_.curve.B == B && fit_.curve.F == F) return true;
    return calibValid_ && MakeFit(fit_, {R, B, F}, calib_.radFitLowTemp, calib_.radFitHighTemp);
}

template <class Object, class Calib>
bool TSignalModel<Object, Calib>::getObjPar(Object& object) const {
    if (objValid_) object = object_;
    return objValid_;
}

template <class Object, class Calib>
bool TSignalModel<Object, Calib>::GetCalibratedRange(EUnit unit, ETempType scale, float& lower, float& upper) const {
    if (!clipOn_ || !(limits_.lower < limits_.upper)) return false;
    if (unit != RadianceFactory && unit != TemperatureFactory && unit != ObjectSignal) return false;
    const SSignalUnit to = In(unit, scale);
    lower = static_cast<float>(to.ValueOf(powToObjSig(limits_.lower)));
    upper = static_cast<float>(to.ValueOf(powToObjSig(limits_.upper)));
    return true;
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::powToObjSig(double pow) const {
    return pow * K1_ - K2_;
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::objSigToPow(double signal) const {
    return K1_ > 0 ? (signal + K2_) / K1_ : kNoPow;
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::objSigToTemp(double signal) const {
    return KelvinOf(CurveOf(calib_), signal);
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::tempToObjSig(double kelvin) const {
    return SignalOf(CurveOf(calib_), kelvin);
}

template <class Object, class Calib>
SSignalUnit TSignalModel<Object, Calib>::In(EUnit unit, ETempType scale) const {
    return {unit, TemperatureScale(scale), CurveOf(calib_), fit_.radiance};
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::Clear(bool clipOn) {
    usedAtmTao_ = K1_ = K2_ = 0;
    objValid_ = calibValid_ = false;
    measAmbObjSig_ = -1.0;
    clipOn_ = clipOn;
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::Take(const Object* object, const Calib* calib) {
    if (calib) calib_ = *calib;
    if (object) object_ = *object;
    calibValid_ = calib != nullptr;
    objValid_ = object != nullptr;
    Refresh();
    if (calib) InitRad(calib->planckR, calib->planckB, calib->planckF);
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::Refresh() {
    if (!objValid_) return;
    doUpdateCalcConst();
    doUpdateUflwOflw();
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::doCalcK1() const {
    const double product = double{object_.emissivity} * usedAtmTao_ * object_.extOpticsTrans;
    return product > 0 ? 1 / product : product;
}

template <class Object, class Calib>
double TSignalModel<Object, Calib>::doCalcK2(double refl, double atm, double ext) const {
    return SOpticalPath{object_.emissivity, usedAtmTao_, object_.extOpticsTrans}.Surroundings(refl, atm, ext);
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::doUpdateCalcConst() {
    usedAtmTao_ = object_.atmosphereTrans > 0 ? double{object_.atmosphereTrans} : doCalcAtmTao();
    K1_ = doCalcK1();
    const double measured = measAmbObjSig_;
    K2_ = measured > 0 ? doCalcK2(measured, measured, measured)
                       : doCalcK2(tempToObjSig(object_.reflectedTemp), tempToObjSig(object_.atmosphereTemp),
                                  tempToObjSig(object_.extOpticsTemp));
    calOverflowPow_ = calUpperPow_ = kNoPow;
    calLowerPow_ = calUnderflowPow_ = kLeastPow;
    if (!calibValid_ || !clipOn_) return;
    const auto pow = [this](double kelvin) { return (tempToObjSig(kelvin) + K2_) / K1_; };
    calOverflowPow_ = pow(calib_.overflowTemp) + 1.01;
    calUpperPow_ = pow(calib_.upperTemp) + 1.01;
    calLowerPow_ = pow(calib_.lowerTemp) - 0.01;
    calUnderflowPow_ = pow(calib_.underflowTemp) - 0.01;
}

template <class Object, class Calib>
auto TSignalModel<Object, Calib>::CalcPowSpan() const -> SPowSpan {
    double bottom = kLeastPow, top = kNoPow;
    if (clipOn_) {
        top = K1_ > 0 ? (tempToObjSig(1e9) + K2_) / K1_ : kNoPow;
        bottom = K1_ > 0 ? K2_ / K1_ : kNoPow;
        if (top > calOverflowPow_) top = calOverflowPow_;
        if (calUnderflowPow_ > bottom) bottom = calUnderflowPow_;
        if (bottom > kNoPow) bottom = kNoPow;
        if (!(bottom > kLeastPow)) bottom = kLeastPow;
    }
    if (top < kLeastPow) top = kLeastPow;
    if (!(top < kNoPow)) top = kNoPow;
    return {bottom, top};
}

template <class Object, class Calib>
void TSignalModel<Object, Calib>::SetPowLimits(const SPowSpan& span) {
    limits_.overflow = span.top;
    limits_.underflow = span.bottom;
    limits_.upper = std::min(span.top, calUpperPow_);
    limits_.lower = std::max(span.bottom, calLowerPow_);
}

}  // namespace ovix::reduce
