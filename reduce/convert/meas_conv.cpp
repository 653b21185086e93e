#include "reduce/convert/meas_conv.h"

#include <algorithm>
#include <cmath>

#include "reduce/convert/atmosphere.h"
#include "reduce/convert/kelvin_scale.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

namespace {

constexpr i32 kTopCount = 65535;
constexpr double kNoPowOfCount = 100000.0;

constexpr double kLowWave = 8.0;  // micrometres
constexpr double kHighWave = 12.0;

i32 WrappingSum(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b)); }
i32 WrappingDifference(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b)); }

double PowOf(const SAdjustParams& adjust, i32 img) {
    if (img == 0) return 0.0;
    const i32 count = std::clamp(img, 1, kTopCount);
    if (!adjust.nonlinearOn) return static_cast<double>(WrappingSum(count, adjust.offset)) * adjust.gain;
    const i32 d = WrappingDifference(count, adjust.nonlinearOffset);
    const float q = static_cast<float>(d) * adjust.nonlinearGain;  // single precision
    const double den = 1.0 - q;
    if (adjust.nonlinearGain > 0 && den < 0.0001) return kNoPowOfCount;
    return static_cast<double>(d) * adjust.gain / den + adjust.offset;
}

/// Truncated; what lies beyond the counts, on either side, stays beyond them, and NaN lies below.
i32 CountOf(float value) {
    if (value >= kTopCount + 1) return kTopCount + 1;
    return value > -1 ? static_cast<i32>(value) : -1;
}

}  // namespace

CMeasConv::CMeasConv(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib)
    : TSignalModel(CRadianceFit(kLowWave, kHighWave, CRadianceFit::EWays::Forward)) {
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
    const u8 flags = clipOn_ ? limits_.Apply(pow) : u8{0};
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

    /// `finish(out[i], object signal)` for each count; see the header for what a status changes.
    template <class CountAt, class Finish>
    void Loop(u32 count, CountAt countAt, float* out, u8* status, Finish finish) const {
        const SKernel self = *this;
        if (!status) {
            for (u32 i = 0; i < count; ++i) finish(out[i], PowOf(self.adjust, countAt(i)) * self.K1 - self.K2);
            return;
        }
        for (u32 i = 0; i < count; ++i) {
            const i32 img = countAt(i);
            const int beyond = img == 0 ? 32 : img > kTopCount ? 4 : img < 1 ? 2 : 0;
            double pow = PowOf(self.adjust, img);
            status[i] = static_cast<u8>(beyond | (self.clipOn ? self.limits.Apply(pow) : 0));
            finish(out[i], pow * self.K1 - self.K2);
        }
    }

    template <class Finish>
    void Run(float* out, const float* in, u8* status, u32 count, Finish finish) const {
        Loop(
            count, [in](u32 i) { return CountOf(in[i]); }, out, status, finish);
    }
    template <class Finish>
    void Run(float* out, const u16* in, u8* status, u32 count, Finish finish) const {
        Loop(
            count, [in](u32 i) { return i32{in[i]}; }, out, status, finish);
    }
    template <class Finish>
    void Run(u16 first, u16 last, float* out, u8* status, Finish finish) const {
        const u32 count = first <= last ? u32{last} - first + 1 : 0;
        Loop(
            count, [first](u32 i) { return static_cast<i32>(first + i); }, out, status, finish);
    }
};

CMeasConv::SKernel CMeasConv::Kernel() const { return {adjust_, clipOn_, limits_, K1_, K2_}; }

template <class... Span>
void CMeasConv::RunTemp(ETempType scale, Span... span) const {
    const SKelvinScale to = KelvinScale(scale);
    if (!to.known) return Kernel().Run(span..., [](float&, double) {});  // the status alone
    Kernel().Run(span..., [curve = Curve(), to](float& out, double signal) {
        out = static_cast<float>(to.FromKelvin(curve.Temperature(signal)));
    });
}
template <class... Span>
void CMeasConv::RunObjectSignal(Span... span) const {
    Kernel().Run(span..., [](float& out, double signal) { out = static_cast<float>(signal); });
}
template <class... Span>
void CMeasConv::RunRadiance(Span... span) const {
    Kernel().Run(span...,
                 [fit = fit_.radiance()](float& out, double signal) { out = static_cast<float>(fit.At(signal)); });
}

void CMeasConv::imgToTemp(float* out, const float* in, u8* status, u32 count, ETempType scale) const {
    RunTemp(scale, out, in, status, count);
}
void CMeasConv::imgToTemp(float* out, const u16* in, u8* status, u32 count, ETempType scale) const {
    RunTemp(scale, out, in, status, count);
}
void CMeasConv::imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const {
    RunTemp(scale, first, last, out, status);
}
void CMeasConv::imgToObjectSignal(float* out, const float* in, u8* status, u32 count) const {
    RunObjectSignal(out, in, status, count);
}
void CMeasConv::imgToObjectSignal(float* out, const u16* in, u8* status, u32 count) const {
    RunObjectSignal(out, in, status, count);
}
void CMeasConv::imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const {
    RunObjectSignal(first, last, out, status);
}
void CMeasConv::imgToRadiance(float* out, const float* in, u8* status, u32 count) const {
    RunRadiance(out, in, status, count);
}
void CMeasConv::imgToRadiance(float* out, const u16* in, u8* status, u32 count) const {
    RunRadiance(out, in, status, count);
}
void CMeasConv::imgToRadiance(u16 first, u16 last, float* out, u8* status) const {
    RunRadiance(first, last, out, status);
}

}  // namespace ovix::reduce
