#pragma once

#include <memory>

#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

struct SRadianceLaw;

/// The radiometric formula of the Merlin family, for one preset: a polynomial leads from the signal straight to what is
/// called radiance here, that which comes from the object's direction with the atmosphere and external optics taken
/// out; temperature follows from it by the emissivity, the surroundings and a Planck curve. There is no object signal.
///
/// A signal of 0 is one like any other. Radiances are held against the calibrated range, in which status bits 1, 2 and
/// 4 have their usual meaning; that happens whether or not `status` is null. Where an operation says nothing of its
/// status it does not write it. A scale that is none of the four means kelvin. Nothing here fails: nonsense comes out
/// as infinite, or as NaN.
///
/// A model is unusable before `Init`. Conversions only read it; neither `Init` nor `ReInit` may overlap one.
class OVIX_REDUCE_API CMrlConv {
  public:
    /// Takes copies of both (of the calibration without its tables). An emissivity of 0 counts as 1. The polynomial
    /// back from radiance to signal is fitted anew only if the one to radiance is another than before.
    void Init(const CMerlinFactoryCalReduceObject& calibration, const CObjectParametersReduceObject& params);
    /// Another scene. The limits stay.
    void ReInit(const CObjectParametersReduceObject& params);
    /// For who is about to convert all signals in one scene after the other: what a polynomial of the fifth degree or
    /// higher says of the signals of 14 bits but for the scene is computed once, and serves until the polynomial is
    /// another one. No result changes by it.
    void PrepareRanges();

    /// The transmission in force: that of the object parameters unless it is 0, else that of the atmosphere's formula.
    double getUsedAtmTao() const { return usedAtmTao_; }

    /// The calibrated range as values of `RadianceFactory`, or of `TemperatureFactory` in `scale`: what lies strictly
    /// between has the status 0. False, with nothing written, for any other unit and where no value is inside.
    bool GetCalibratedRange(EUnit unit, ETempType scale, float& lower, float& upper) const;

    // Single values.

    float SignalToRadiance(u16 signal, u8* status) const;
    float SignalToTemperature(u16 signal, u8* status, ETempType scale) const;
    /// `status` is not written, as in the next one.
    float RadianceToTemperature(float radiance, u8* status, ETempType scale) const;
    float TemperatureToRadiance(float value, u8* status, ETempType scale) const;
    /// What lies beyond 16 bits keeps its low ones. The linear forms truncate, the fitted polynomial rounds.
    u16 RadianceToSignal(float radiance, u8* status) const;
    u16 TemperatureToSignal(float value, u8* status, ETempType scale) const;

    // Buffers of `count` elements, over all processors, and all signals from `first` to `last` inclusive, on the
    // caller's thread. The results are those of the single values. Many signals of few values, as a frame has them, go
    // through a table that is made in the call.

    void SignalToRadiance(const u16* in, float* out, u8* status, u32 count) const;
    void SignalToTemperature(const u16* in, float* out, u8* status, u32 count, ETempType scale) const;
    void SignalToRadiance(u16 first, u16 last, float* out, u8* status) const;
    void SignalToTemperature(u16 first, u16 last, float* out, u8* status, ETempType scale) const;

  private:
    SRadianceLaw Law() const;
    void CalcLimits();
    void FitInverse();
    double Inverse(float value) const;
    void Radiances(const u16* signals, u32 count, float* out, u8* status) const;
    void Temperatures(const u16* signals, u32 count, float* out, u8* status, ETempType scale) const;

    CMerlinFactoryCalReduceObject cal_;
    CObjectParametersReduceObject obj_;
    double K2_ = 0;  ///< the surroundings, as an object signal
    double usedAtmTao_ = 0;
    double kPath_ = 0;        ///< 1 over what the air and the external optics let through
    SLimitRule limits_;       ///< of radiance
    double inverse_[7] = {};  ///< polynomial from radiance over kPath to signal
    std::shared_ptr<const double[]> unscaled_;
};

}  // namespace ovix::reduce
