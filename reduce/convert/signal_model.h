#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/convert/model_state.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

struct SSignalUnit;

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
class TSignalModel {
  public:
    virtual ~TSignalModel() = default;

    /// Null takes the scene away and changes nothing else; a record brings the model up to date.
    void setObjPar(const Object* object);
    /// The quick change: the other values of the scene stay.
    void ChangeScene(float emissivity, float distance);
    /// A black body before the lens: emissivity 1, distance 0, all temperatures 293.15 K, dry air, no external optics.
    void setDefObjPar();
    /// Null takes the calibration away. No new fit of the radiance is made.
    void setCalibPar(const Calib* calib);
    /// Whether limits are applied. Always true.
    bool setClipOn(bool on);
    /// One measured object signal that stands for all surroundings; -1 for none. Answers the former one. Takes effect
    /// at the next setter that brings the model up to date.
    double setMeasAmbObjSig(double signal);
    /// Fits radiance to the object signals of the curve with these constants, over the calibration's fit range; nothing
    /// to do when the last fit had the same ones. False, with the fit left as it was, without calibration, for a range
    /// that makes none, and when the points do not determine the fit.
    bool InitRad(double R, double B, double F);

    const Object* ObjPar() const { return &object_; }
    const Calib* CalibPar() const { return &calib_; }
    /// False, with nothing copied, without a scene.
    bool getObjPar(Object& object) const;
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

    /// The calibrated range seen through the scene, as values of `RadianceFactory`, `ObjectSignal` or
    /// `TemperatureFactory` (in `scale`; none of the four means kelvin): what lies strictly between has the status 0.
    /// It ends where the calibration does or where the detector or the curve has no more to give. False, with nothing
    /// written, for any other unit, with limits off, and where no value is inside.
    bool GetCalibratedRange(EUnit unit, ETempType scale, float& lower, float& upper) const;

    double powToObjSig(double pow) const;
    double objSigToPow(double signal) const;
    double objSigToTemp(double signal) const;
    double tempToObjSig(double kelvin) const;

  protected:
    /// The family's band in micrometres, and whether it converts radiances back.
    TSignalModel(double lowWave, double highWave, bool bothWays);

    virtual double doCalcAtmTao() const = 0;
    /// Sets the limits of pow.
    virtual void doUpdateUflwOflw() = 0;

    /// How object signals become values of a unit.
    SSignalUnit In(EUnit unit, ETempType scale = Celsius) const;

    /// The state of a model without records. The radiance fit and the records stay.
    void Clear(bool clipOn);
    /// Takes the records given, brings the model up to date and fits the radiance.
    void Take(const Object* object, const Calib* calib);
    void Refresh();

    double doCalcK1() const;
    /// The arguments are the object signals of the surroundings, the atmosphere and the external optics.
    double doCalcK2(double refl, double atm, double ext) const;
    void doUpdateCalcConst();

    struct SPowSpan {
        double bottom;
        double top;
    };
    /// What the curve and the calibration allow, before the family's detector narrows it.
    SPowSpan CalcPowSpan() const;
    void SetPowLimits(const SPowSpan& span);

    bool objValid_ = false;
    Object object_;
    bool calibValid_ = false;
    Calib calib_;
    bool clipOn_ = true;
    double usedAtmTao_ = 0;
    double K1_ = 0;
    double K2_ = 0;
    SLimitRule limits_;  ///< of pow
    SRadianceFit fit_;

  private:
    double calOverflowPow_ = 0;
    double calUpperPow_ = 0;
    double calLowerPow_ = 0;
    double calUnderflowPow_ = 0;
    double measAmbObjSig_ = -1.0;  ///< -1: none
};

}  // namespace ovix::reduce
