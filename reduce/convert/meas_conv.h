#pragma once

#include "core/typed_data.h"
#include "reduce/convert/signal_model.h"

namespace ovix::reduce {

/// How counts become pow.
struct SAdjustParams {
    i32 offset = 0;           ///< added to the count
    float gain = 1.0f;        ///< factor of the count
    u16 imgMin = 1;           ///< lowest usable count
    u16 imgMax = 65534;       ///< highest usable count
    u16 nonlinearOn = 0;      ///< 0: linear detector
    float nonlinearGain = 0;  ///< coefficient of the nonlinear form
    i32 nonlinearOffset = 0;  ///< count at which the nonlinear form is centred
    u32 reserved[4] = {};     ///< copied along
};

/// The scene. Temperatures in kelvin.
struct SObjectParams {
    float emissivity = 0;
    float distance = 0;
    float reflectedTemp = 0;
    float atmosphereTemp = 0;
    float extOpticsTemp = 0;
    float extOpticsTrans = 0;
    float atmosphereTrans = 0;   ///< used as given when above 0, otherwise computed
    float relativeHumidity = 0;  ///< 0 to 1
    u32 reserved[4] = {};        ///< copied along
};

/// The calibration. Temperatures in kelvin.
struct SCalibParams {
    float planckR = 0;
    float planckB = 0;
    float planckF = 0;
    float atmAlpha1 = 0;
    float atmAlpha2 = 0;
    float atmBeta1 = 0;
    float atmBeta2 = 0;
    float atmX = 0;
    float radFitHighTemp = 0;  ///< ends of the range over which radiance is fitted to object signal
    float radFitLowTemp = 0;
    float overflowTemp = 0;   ///< where the calibration ends
    float underflowTemp = 0;  ///< where the calibration starts
    float upperTemp = 0;      ///< ends of the calibrated range
    float lowerTemp = 0;
};

extern template class OVIX_REDUCE_API TSignalModel<SObjectParams, SCalibParams>;

/// The radiometric formula of the Curlew family: from a raw detector value, *img*, to pow, object signal, temperature
/// and radiance, and back. Temperatures are in kelvin, radiances those of the band from 8 to 12 micrometres.
///
/// A new scene, calibration or adjustment brings the limits up to date; only `init` and `InitRad` fit the radiance.
class OVIX_REDUCE_API CMeasConv : public TSignalModel<SObjectParams, SCalibParams> {
  public:
    explicit CMeasConv(const SAdjustParams* adjust = nullptr, const SObjectParams* object = nullptr,
                       const SCalibParams* calib = nullptr);

    /// Starts over, with limits on; each record may be null. A radiance fit survives if the constants are the same.
    void init(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib);
    /// Null means the defaults of the record.
    void setAdjPar(const SAdjustParams* adjust);
    const SAdjustParams* AdjPar() const { return &adjust_; }

    // Single values. The two with a status apply the limits whether or not `status` is null.

    /// 0 for the count 0; all others are limited to 1 to 65535.
    double imgToPow(i32 img) const;
    /// 0 for 0, else 1 to 65535. The linear form rounds, the nonlinear one truncates.
    u16 powToImg(double pow) const;
    u16 powToImg(double pow, i32 offset, double gain) const;
    u16 tempToImg(double kelvin) const;
    /// The radiance of a black body at so many degrees Celsius.
    static float tempToRad(float celsius);
    /// The limit rule; null is allowed. Status 0 with limits off.
    double clipPow(double pow, u8* status) const;
    double imgToTemp(i32 img, u8* status) const;
    double imgToObjectSignal(i32 img, u8* status) const;

    // Buffers of `count` elements, and all signals from `first` to `last` inclusive. Floats are truncated.
    //
    // With a null status no limit is applied at all. With one, a count of 0 has the status 32, one beyond 1 to 65535
    // has 2 or 4, and the limits of pow add theirs: so a zero count ends with 34 at the lower limit. A scale that is
    // none of the four leaves `out` as it was; the status is written all the same. Many counts of few values, as a
    // frame has them, go through a table that is made in the call.

    void imgToTemp(float* out, const float* in, u8* status, u32 count, ETempType scale) const;
    void imgToTemp(float* out, const u16* in, u8* status, u32 count, ETempType scale) const;
    void imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const;
    void imgToObjectSignal(float* out, const float* in, u8* status, u32 count) const;
    void imgToObjectSignal(float* out, const u16* in, u8* status, u32 count) const;
    void imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const;
    void imgToRadiance(float* out, const float* in, u8* status, u32 count) const;
    void imgToRadiance(float* out, const u16* in, u8* status, u32 count) const;
    void imgToRadiance(u16 first, u16 last, float* out, u8* status) const;

  protected:
    double doCalcAtmTao() const override;
    void doUpdateUflwOflw() override;

  private:
    struct SKernel;
    SKernel Kernel(EUnit unit, ETempType scale = Celsius) const;

    SAdjustParams adjust_;
};

}  // namespace ovix::reduce
