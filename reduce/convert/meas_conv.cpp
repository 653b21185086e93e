#include "reduce/convert/meas_conv.h"

#include <algorithm>
#include <cmath>

#include "reduce/convert/signal_model-inl.h"
#include "reduce/convert/signal_runs.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/simd/model_simd.h"

namespace ovix::reduce {

template class TSignalModel<SObjectParams, SCalibParams>;

namespace {

constexpr i32 kTopCount = 65535;

constexpr double kLowWave = 8.0;  // micrometres
constexpr double kHighWave = 12.0;

i32 WrappingSum(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b)); }
i32 WrappingDifference(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b)); }

double LinearPowOf(const SAdjustParams& adjust, i32 img) {
    const i32 count = std::clamp(img, 1, kTopCount);
    const double pow = static_cast<double>(WrappingSum(count, adjust.offset)) * adjust.gain;
    return img == 0 ? 0.0 : pow;
}

double PowOf(const SAdjustParams& adjust, i32 img) {
    if (img == 0 || !adjust.nonlinearOn) return LinearPowOf(adjust, img);
    const i32 count = std::clamp(img, 1, kTopCount);
    const i32 d = WrappingDifference(count, adjust.nonlinearOffset);
    const float q = static_cast<float>(d) * adjust.nonlinearGain;  // single precision
    const double den = 1.0 - q;
    if (adjust.nonlinearGain > 0 && den < 0.0001) return kNoPow;
    return static_cast<double>(d) * adjust.gain / den + adjust.offset;
}

/// Truncated; what lies beyond the counts, on either side, stays beyond them, and NaN lies below.
i32 CountOf(float value) {
    if (value >= kTopCount + 1) return kTopCount + 1;
    return value > -1 ? static_cast<i32>(value) : -1;
}

}  // namespace

CMeasConv::CMeasConv(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib)
    : TSignalModel(kLowWave, kHighWave, false) {
    init(adjust, object, calib);
}

void CMeasConv::init(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib) {
    Clear(true);
    limits_.overflow = 0;
    setAdjPar(adjust);
    Take(object, calib);
}

void CMeasConv::setAdjPar(const SAdjustParams* adjust) {
    adjust_ = adjust ? *adjust : SAdjustParams{};
    Refresh();
}

double CMeasConv::doCalcAtmTao() const {
    const float celsius = static_cast<float>(object_.atmosphereTemp - 273.15);  // narrowed
    const float root = std::sqrt(object_.distance);                             // single precision
    return AtmosphereOf(calib_).Transmission(celsius, object_.distance, root, object_.relativeHumidity);
}

void CMeasConv::doUpdateUflwOflw() {
    SPowSpan span = CalcPowSpan();
    const double high = imgToPow(adjust_.imgMax);
    const double low = imgToPow(adjust_.imgMin);
    if (!(high > span.top)) span.top = high;
    if (low >= span.bottom) span.bottom = low;
    SetPowLimits(span);
}

double CMeasConv::imgToPow(i32 img) const { return PowOf(adjust_, img); }

u16 CMeasConv::powToImg(double pow) const { return powToImg(pow, adjust_.offset, double{adjust_.gain}); }
u16 CMeasConv::tempToImg(double kelvin) const { return powToImg(objSigToPow(tempToObjSig(kelvin))); }

u16 CMeasConv::powToImg(double pow, i32 offset, double gain) const {
    if (pow == 0.0) return 0;
    double r;
    if (adjust_.nonlinearOn) {
        const double u = pow - offset;
        const double den = adjust_.nonlinearGain * u + gain;
        if (den < 0.0001) return 1;
        r = std::trunc(u / den) + adjust_.nonlinearOffset;
    } else {
        if (gain < 0.0001) return 1;
        r = std::trunc(pow / gain - offset + 0.5);
    }
    if (r >= kTopCount) return kTopCount;
    return r > 1 ? static_cast<u16>(r) : u16{1};
}

float CMeasConv::tempToRad(float celsius) { return static_cast<float>(Radiance(celsius, kLowWave, kHighWave, 1.0)); }

double CMeasConv::clipPow(double pow, u8* status) const {
    const u8 flags = clipOn_ ? Limit(pow, limits_) : u8{0};
    if (status) *status = flags;
    return pow;
}

double CMeasConv::imgToObjectSignal(i32 img, u8* status) const { return powToObjSig(clipPow(imgToPow(img), status)); }
double CMeasConv::imgToTemp(i32 img, u8* status) const { return objSigToTemp(imgToObjectSignal(img, status)); }

/// The model's constants by value: an output buffer could alias the model's own, and the loops would have to read them
/// again for each element.
struct CMeasConv::SKernel {
    SAdjustParams adjust;
    bool clipOn;
    SLimitRule limits;
    double K1;
    double K2;
    SSignalUnit to;
    bool keepsOutput;  ///< the status alone is made

    /// A block; see the header for what a status changes.
    template <class Count>
    void operator()(const Count* counts, u32 n, float* out, u8* status) const {
        double values[kSignalBlock];
        Pows(counts, n, values);
        if (status) {
            if (clipOn) {
                simd::LimitAll(limits, values, status, n);
            } else {
                std::fill_n(status, n, u8{0});
            }
            for (u32 i = 0; i < n; ++i) status[i] = static_cast<u8>(status[i] | Beyond(counts[i]));
        }
        if (keepsOutput) return;
        std::transform(values, values + n, values, [k1 = K1, k2 = K2](double pow) { return pow * k1 - k2; });
        to.ValuesOf(values, n, out);
    }

    static u8 Beyond(i32 img) { return img == 0 ? 32 : img > kTopCount ? 4 : img < 1 ? 2 : 0; }

    template <class Count>
    void Pows(const Count* counts, u32 n, double* pows) const {
        const SAdjustParams a = adjust;
        const auto each = [=](auto powOf) { std::transform(counts, counts + n, pows, powOf); };
        a.nonlinearOn ? each([=](i32 img) { return PowOf(a, img); })
                      : each([=](i32 img) { return LinearPowOf(a, img); });
    }

    void Run(float* out, const float* in, u8* status, u32 count) const {
        ForEachBlockOf(count, [&](u32 at, u32 n) {
            i32 counts[kSignalBlock];
            std::transform(in + at, in + at + n, counts, CountOf);
            (*this)(counts, n, out + at, status ? status + at : nullptr);
        });
    }
    void Run(float* out, const u16* in, u8* status, u32 count) const {
        keepsOutput ? RunEach(in, out, status, count, *this) : RunSignals(in, out, status, count, *this);
    }
    void Run(u16 first, u16 last, float* out, u8* status) const { RunRange(first, last, out, status, *this); }
};

CMeasConv::SKernel CMeasConv::Kernel(EUnit unit, ETempType scale) const {
    const bool keepsOutput = unit == TemperatureFactory && !TemperatureScale(scale).known;
    return {adjust_, clipOn_, limits_, K1_, K2_, In(unit, scale), keepsOutput};
}

void CMeasConv::imgToTemp(float* out, const float* in, u8* status, u32 count, ETempType scale) const {
    Kernel(TemperatureFactory, scale).Run(out, in, status, count);
}
void CMeasConv::imgToTemp(float* out, const u16* in, u8* status, u32 count, ETempType scale) const {
    Kernel(TemperatureFactory, scale).Run(out, in, status, count);
}
void CMeasConv::imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const {
    Kernel(TemperatureFactory, scale).Run(first, last, out, status);
}
void CMeasConv::imgToObjectSignal(float* out, const float* in, u8* status, u32 count) const {
    Kernel(ObjectSignal).Run(out, in, status, count);
}
void CMeasConv::imgToObjectSignal(float* out, const u16* in, u8* status, u32 count) const {
    Kernel(ObjectSignal).Run(out, in, status, count);
}
void CMeasConv::imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const {
    Kernel(ObjectSignal).Run(first, last, out, status);
}
void CMeasConv::imgToRadiance(float* out, const float* in, u8* status, u32 count) const {
    Kernel(RadianceFactory).Run(out, in, status, count);
}
void CMeasConv::imgToRadiance(float* out, const u16* in, u8* status, u32 count) const {
    Kernel(RadianceFactory).Run(out, in, status, count);
}
void CMeasConv::imgToRadiance(u16 first, u16 last, float* out, u8* status) const {
    Kernel(RadianceFactory).Run(first, last, out, status);
}

}  // namespace ovix::reduce
