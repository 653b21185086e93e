#pragma once

#include <algorithm>
#include <utility>

#include "core/types.h"
#include "reduce/api.h"
#include "reduce/convert/limit_rule.h"
#include "reduce/convert/optical_path.h"
#include "reduce/convert/planck_curve.h"
#include "reduce/convert/radiance_fit.h"

namespace ovix::reduce {

/// What the measurement models with an object signal have in common: the scene, the Planck curve, and the limits that
/// follow from them.
///
/// A detector value, linearised, is called *pow*. The *object signal* is pow with atmosphere, external optics and
/// reflected surroundings taken out and the emissivity compensated: what a black body at the object's temperature would
/// give. A family adds how its counts become pow, its atmosphere, the band of its radiance, and its buffer forms.
///
/// `Object` and `Calib` are the family's records of scene and calibration; their fields are floats of the same names in
/// all families, temperatures in kelvin. Nothing here fails: where no value exists pow is 100000 and a temperature 0 K.
///
/// Conversions only read the model and may run on many threads at once; none may overlap a setter.
template <class Object, class Calib>
class OVIX_REDUCE_API TSignalModel {
  public:
    virtual ~TSignalModel() = default;

    /// Null takes the scene away and changes nothing else; a record brings the model up to date.
    void setObjPar(const Object* object) {
        objValid_ = object != nullptr;
        object_ = object ? *object : Object{};
        Refresh();
    }
    /// The quick change: the other values of the scene stay.
    void ChangeScene(float emissivity, float distance) {
        Object object = object_;
        object.emissivity = emissivity;
        object.distance = distance;
        setObjPar(&object);
    }
    /// A black body before the lens: emissivity 1, distance 0, all temperatures 293.15 K, dry air, no external optics.
    void setDefObjPar() {
        Object object{};
        object.emissivity = 1.0f;
        object.reflectedTemp = object.atmosphereTemp = object.extOpticsTemp = 293.15f;
        object.extOpticsTrans = 1.0f;
        setObjPar(&object);
    }
    /// Null takes the calibration away. No new fit of the radiance is made.
    void setCalibPar(const Calib* calib) {
        calibValid_ = calib != nullptr;
        calib_ = calib ? *calib : Calib{};
        if (calibValid_) Refresh();
    }
    /// Whether limits are applied. Always true.
    bool setClipOn(bool on) {
        clipOn_ = on;
        Refresh();
        return true;
    }
    /// One measured object signal that stands for all surroundings; -1 for none. Answers the former one. Takes effect
    /// at the next setter that brings the model up to date.
    double setMeasAmbObjSig(double signal) { return std::exchange(measAmbObjSig_, signal); }
    /// Fits radiance to the object signals of the curve with these constants, over the calibration's fit range; nothing
    /// to do when the last fit had the same ones. False, with the fit left as it was, without calibration, for a range
    /// that makes none, and when the points do not determine the fit.
    bool InitRad(double R, double B, double F) {
        const SPlanckCurve curve{R, B, F};
        return fit_.IsOf(curve) || (calibValid_ && fit_.Make(curve, calib_.radFitLowTemp, calib_.radFitHighTemp));
    }

    const Object* ObjPar() const { return &object_; }
    const Calib* CalibPar() const { return &calib_; }
    /// False, with nothing copied, without a scene.
    bool getObjPar(Object& object) const {
        if (objValid_) object = object_;
        return objValid_;
    }
    bool isClipOn() const { return clipOn_; }
    double getMeasAmbObjSig() const { return measAmbObjSig_; }
    /// Object signal is pow times K1 minus K2.
    double getK1() const { return K1_; }
    double getK2() const { return K2_; }
    /// The transmission in force, and the one that the atmosphere's formula gives.
    double getUsedAtmTao() const { return usedAtmTao_; }
    double getCalculatedAtmTao() const { return doCalcAtmTao(); }
    double getPowOverflow() const { return limits_.overflow; }
    double getPowUnderflow() const { return limits_.underflow; }

    double powToObjSig(double pow) const { return pow * K1_ - K2_; }
    double objSigToPow(double signal) const { return K1_ > 0 ? (signal + K2_) / K1_ : kNoPow; }
    double objSigToTemp(double signal) const { return Curve().Temperature(signal); }
    double tempToObjSig(double kelvin) const { return Curve().Signal(kelvin); }

  protected:
    static constexpr double kNoPow = 100000.0;  ///< the pow of nothing valid, and the greatest one
    static constexpr double kLeastPow = 1e-06;

    explicit TSignalModel(const CRadianceFit& fit) : fit_(fit) {}

    virtual double doCalcAtmTao() const = 0;
    /// Sets the limits of pow.
    virtual void doUpdateUflwOflw() = 0;

    SPlanckCurve Curve() const { return CurveOf(calib_); }

    /// The state of a model without records. The radiance fit and the records stay.
    void Clear(bool clipOn) {
        usedAtmTao_ = K1_ = K2_ = 0;
        objValid_ = calibValid_ = false;
        measAmbObjSig_ = -1.0;
        clipOn_ = clipOn;
    }
    /// Takes the records given, brings the model up to date and fits the radiance.
    void Take(const Object* object, const Calib* calib) {
        if (calib) calib_ = *calib;
        if (object) object_ = *object;
        calibValid_ = calib != nullptr;
        objValid_ = object != nullptr;
        Refresh();
        if (calib) InitRad(calib->planckR, calib->planckB, calib->planckF);
    }
    void Refresh() {
        if (!objValid_) return;
        doUpdateCalcConst();
        doUpdateUflwOflw();
    }

    double doCalcK1() const {
        const double product = double{object_.emissivity} * usedAtmTao_ * object_.extOpticsTrans;
        return product > 0 ? 1 / product : product;
    }
    /// The arguments are the object signals of the surroundings, the atmosphere and the external optics.
    double doCalcK2(double refl, double atm, double ext) const {
        return SOpticalPath{object_.emissivity, usedAtmTao_, object_.extOpticsTrans}.Surroundings(refl, atm, ext);
    }
    void doUpdateCalcConst() {
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

    struct SPowSpan {
        double bottom;
        double top;
    };
    /// What the curve and the calibration allow, before the family's detector narrows it.
    SPowSpan CalcPowSpan() const {
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
    void SetPowLimits(const SPowSpan& span) {
        limits_.overflow = span.top;
        limits_.underflow = span.bottom;
        limits_.upper = std::min(span.top, calUpperPow_);
        limits_.lower = std::max(span.bottom, calLowerPow_);
    }

    bool objValid_ = false;
    Object object_;
    bool calibValid_ = false;
    Calib calib_;
    bool clipOn_ = true;
    double usedAtmTao_ = 0;
    double K1_ = 0;
    double K2_ = 0;
    SLimitRule limits_;  ///< of pow
    CRadianceFit fit_;

  private:
    double calOverflowPow_ = 0;
    double calUpperPow_ = 0;
    double calLowerPow_ = 0;
    double calUnderflowPow_ = 0;
    double measAmbObjSig_ = -1.0;  ///< -1: none
};

}  // namespace ovix::reduce
