#pragma once

#include <memory>

#include "core/typed_data.h"
#include "reduce/convert/signal_model.h"

namespace ovix::reduce {

/// The detector's gain and offset.
struct _adjust_par_t {
    u32 mode = 0;          ///< 2: gain and offset are applied; any other value: they are not
    float gain = 0;        ///< factor
    float offset = 0;      ///< subtracted before the factor
    u32 reserved[4] = {};  ///< copied along
};

/// The compensation of the camera's own warmth, see `UpdateFromTempSens`.
struct _tdrift_par_t {
    u32 mode = 0;         ///< 1: on; any other value: off
    float reserved1 = 0;  ///< copied along
    float driftR = 0;     ///< Planck constants of the glow of housing and air gap
    float driftB = 0;
    float driftF = 0;
    float drift3 = 0;  ///< coefficients
    float drift4 = 0;
    float drift5 = 0;
    float drift6 = 0;
    float drift7 = 0;
    float drift8 = 0;
    float drift9 = 0;
    float reserved2 = 0;  ///< copied along
};

/// The scene. Temperatures in kelvin. The order of the fields is this family's own.
struct _object_par_t {
    float emissivity = 0;
    float reflectedTemp = 0;
    float atmosphereTemp = 0;
    float distance = 0;
    float relativeHumidity = 0;  ///< 0 to 1
    float atmosphereTrans = 0;   ///< used as given when above 0, otherwise computed
    float extOpticsTemp = 0;
    float extOpticsTrans = 0;
    u32 reserved[4] = {};  ///< copied along
};

/// The calibration. Temperatures in kelvin.
struct _cal_param_t {
    u32 planckForm = 0;  ///< 2; the model does not read it
    float planckR = 0;
    float planckB = 0;
    float planckF = 0;
    float gainDrift0 = 0;  ///< how the gain depends on the temperature of the front panel
    float gainDrift1 = 0;
    float gainDrift2 = 0;
    float gainDrift3 = 0;
    u32 atmosphereForm = 0;  ///< 1; the model does not read it
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

/// The instrument's temperatures, kelvin.
struct _imageinfo_t {
    float frontPanelTemp = 0;
    float airGapTemp = 0;
    float dewarTemp = 0;
};

extern template class OVIX_REDUCE_API TSignalModel<_object_par_t, _cal_param_t>;

/// The radiometric formula of the Tern family: from a count of 14 bits, *img*, to pow, object signal, temperature and
/// radiance, and back. Temperatures are in kelvin where nothing else is said, radiances those of the band from 3 to 5
/// micrometres. One model serves one preset.
///
/// A count of 0 is no data: its pow is -1, its status 32. Unlike in the Curlew family the limits apply in all forms
/// that have a status, whether or not it is null. A scale that is none of the four means kelvin.
///
/// A new scene, calibration or adjustment brings the limits up to date, new instrument temperatures do not. Only `init`
/// and `InitRad` fit the radiance. A model without records has limits of 0: all its results are overflows.
class OVIX_REDUCE_API CTrnMeasConv : public TSignalModel<_object_par_t, _cal_param_t> {
  public:
    static constexpr u32 kSignals = 16384;

    CTrnMeasConv();
    /// Each record may be null.
    CTrnMeasConv(const _adjust_par_t* adjust, const _tdrift_par_t* tdrift, const _object_par_t* object,
                 const _cal_param_t* calib);

    /// Starts over; each record may be null. A radiance fit survives if the constants are the same.
    void init(const _adjust_par_t* adjust, const _tdrift_par_t* tdrift, const _object_par_t* object,
              const _cal_param_t* calib, bool clipOn);
    /// Null means no adjustment.
    void setAdjPar(const _adjust_par_t* adjust);
    const _adjust_par_t* AdjPar() const { return &adjust_; }

    /// The compensation for the camera's warmth, from the instrument's temperatures; none when it is off, without
    /// calibration, and for temperatures that cannot be. In single precision. The limits of pow do not follow.
    void UpdateFromTempSens(const _imageinfo_t* info);
    double getTdrGain() const { return detector_.driftGain; }
    double getTrdOffset() const { return detector_.driftOffset; }

    // Single values.

    /// -1 for the count 0; all others are limited to 1 to 65535.
    double imgToPow(i32 img) const;
    /// 0 for -1, else 1 to 65535, rounded. What comes out negative is 65535.
    u16 powToImg(double pow) const;
    u16 tempToImg(double kelvin) const;
    /// The radiance of a black body at so many degrees Celsius.
    static float tempToRad(float celsius);

    /// The limit rule, stated by a code: 1 good, or limits off; 2 overflow; 3 underflow; 4 outside the calibrated
    /// range.
    double clipPow(double pow, int* code) const;
    double imgToTemp(i32 img, int* code) const;
    double imgToObjectSignal(i32 img, int* code) const;

    /// These three take counts beyond 14 bits as they are.
    double imgToTemp(u16 img, u8* status, ETempType scale) const;
    double imgToRad(u16 img, u8* status) const;
    double imgToObjectSignal(u16 img, u8* status) const;

    /// The count that gives the value, rounded: 0 (status 32) for no data, 1 (status 2) for the count 0, and 65535
    /// (status 4) for counts beyond, negative ones included.
    u16 objectSignalToImg(double signal, u8* status) const;
    u16 radToImg(double radiance, u8* status) const;
    u16 tempToImg(double value, u8* status, ETempType scale) const;

    // All signals from `first` to `last` inclusive, as the single values with a status.

    void imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const;
    void imgToRad(u16 first, u16 last, float* out, u8* status) const;
    void imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const;

    // Buffers of `count` elements of any numeric types; for any other type nothing happens. Values are truncated and
    // limited to 16383; what is not above 0, or becomes 0, is no data. Integer results are truncated.

    void imgToTemp(STypedData out, STypedData in, u8* status, u32 count, ETempType scale) const;
    void imgToRad(STypedData out, STypedData in, u8* status, u32 count) const;
    void imgToObjectSignal(STypedData out, STypedData in, u8* status, u32 count) const;

    // The same through tables, which only `updateLUT` builds: it is the caller's to call after every change. Before the
    // first time all entries are 0. Copies of a model share its tables until one builds its own anew.
    //
    // The table of temperatures is one of single-precision degrees Celsius, and a scale that is none of the four means
    // Celsius here. That of radiances is computed from the single-precision table of object signals.

    void updateLUT();
    void imgToTempLUT(STypedData out, STypedData in, u8* status, u32 count, ETempType scale) const;
    void imgToRadLUT(STypedData out, STypedData in, u8* status, u32 count) const;
    void imgToObjectSignalLUT(STypedData out, STypedData in, u8* status, u32 count) const;

    // The same through the tables of models[presetMap[i]] for element i, or of models[presetMap[indices[i]]]: indices
    // serve only to find the preset. A null map means preset 0 for all.

    static void imgToTempLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap,
                             u8* status, u32 count, ETempType scale);
    static void imgToRadLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap, u8* status,
                            u32 count);
    static void imgToObjectSignalLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap,
                                     u8* status, u32 count);
    static void imgToTempLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                             const u8* presetMap, u8* status, u32 count, ETempType scale);
    static void imgToRadLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                            const u8* presetMap, u8* status, u32 count);
    static void imgToObjectSignalLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                                     const u8* presetMap, u8* status, u32 count);

  protected:
    double doCalcAtmTao() const override;
    void doUpdateUflwOflw() override;

  private:
    struct SKernel;
    struct STableForm;
    struct STables {
        float celsius[kSignals];
        float radiance[kSignals];
        float objectSignal[kSignals];
        u8 status[kSignals];
    };

    SKernel Kernel(EUnit unit, ETempType scale = Celsius) const;

    _adjust_par_t adjust_;
    _tdrift_par_t tdrift_;
    STernDetector detector_;                 ///< what the two records come to
    std::shared_ptr<const STables> tables_;  ///< null before `updateLUT`
};

}  // namespace ovix::reduce
