#include "reduce/convert/trn_meas_conv.h"

#include <algorithm>
#include <cmath>

#include "core/convert_array.h"
#include "core/math.h"
#include "core/visit.h"
#include "reduce/convert/atmosphere.h"
#include "reduce/convert/integer_rounding.h"
#include "reduce/convert/kelvin_scale.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

namespace {

constexpr double kNoData = -1.0;  ///< the pow of a count of 0

constexpr double kLowWave = 3.0;  // micrometres
constexpr double kHighWave = 5.0;

constexpr u16 kTopSignal = CTrnMeasConv::kSignals - 1;
constexpr u32 kBlock = 512;

template <class T>
u16 SignalOf(T pixel) {
    const double value = static_cast<double>(pixel);
    if (!(value > 0)) return 0;
    return value >= kTopSignal ? kTopSignal : static_cast<u16>(value);
}

/// Calls `result(i, signal, flags)`, a double, for each of `count` pixels, in blocks that lie in cache between reading,
/// computing and storing. Does nothing for types that are not numeric.
template <class Result>
void ForEachSignal(STypedData out, STypedData in, u8* status, u32 count, const Result& result) {
    const FConvertSpan store = ConvertSpanFunction(Flt64, out.type);
    if (!store || !IsNumeric(in.type)) return;
    u16 signals[kBlock];
    double results[kBlock];
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kBlock, count - at);
        Visit(in.type, [&]<class T>(TElement<T>) {
            const T* pixels = static_cast<const T*>(in.data) + at;
            for (u32 i = 0; i < n; ++i) signals[i] = SignalOf(pixels[i]);
        });
        for (u32 i = 0; i < n; ++i) {
            u8 flags = 0;
            results[i] = result(at + i, signals[i], flags);
            if (status) status[at + i] = flags;
        }
        store(results, static_cast<u8*>(out.data) + at * ElementSize(out.type), n);
    }
}

}  // namespace

CTrnMeasConv::CTrnMeasConv() : CTrnMeasConv(nullptr, nullptr, nullptr, nullptr) {}

CTrnMeasConv::CTrnMeasConv(const _adjust_par_t* adjust, const _tdrift_par_t* tdrift, const _object_par_t* object,
                           const _cal_param_t* calib)
    : TSignalModel(CRadianceFit(kLowWave, kHighWave, CRadianceFit::EWays::Both)) {
    init(adjust, tdrift, object, calib, true);
}

void CTrnMeasConv::init(const _adjust_par_t* adjust, const _tdrift_par_t* tdrift, const _object_par_t* object,
                        const _cal_param_t* calib, bool clipOn) {
    Clear(clipOn);
    tdrift_ = tdrift ? *tdrift : _tdrift_par_t{};
    detector_ = {};
    detector_.compensates = tdrift_.mode == 1;
    setAdjPar(adjust);
    Take(object, calib);
}

void CTrnMeasConv::setAdjPar(const _adjust_par_t* adjust) {
    adjust_ = adjust ? *adjust : _adjust_par_t{};
    detector_.adjusts = adjust_.mode == 2;
    detector_.offset = adjust_.offset;
    detector_.gain = adjust_.gain;
    Refresh();
}

void CTrnMeasConv::UpdateFromTempSens(const _imageinfo_t* info) {
    detector_.driftGain = 1.0;
    detector_.driftOffset = 0.0;
    if (!calibValid_ || tdrift_.mode != 1) return;
    const float panel = info->frontPanelTemp, airGap = info->airGapTemp;
    const float gain =
        (1 - std::exp((panel - calib_.gainDrift3) * calib_.gainDrift2)) * calib_.gainDrift1 + calib_.gainDrift0;
    if (!(gain > 0) || !(panel > 0) || !(airGap > 0)) return;
    const auto glow = [this](float kelvin) {
        return tdrift_.driftR / (std::exp(tdrift_.driftB / kelvin) - tdrift_.driftF);
    };
    const float ofGap = tdrift_.drift3 - glow(airGap) * tdrift_.drift4 + tdrift_.drift5;
    const float ofBoth = ofGap - glow(panel) * tdrift_.drift6 + tdrift_.drift7;
    detector_.driftGain = 1.0 / gain;
    detector_.driftOffset = ofBoth + (info->dewarTemp - tdrift_.drift9) * tdrift_.drift8;
}

double CTrnMeasConv::doCalcAtmTao() const {
    const float root = std::sqrt(object_.distance);  // single precision
    return AtmosphereOf(calib_).Transmission(object_.atmosphereTemp - 273.15, object_.distance, root,
                                             object_.relativeHumidity);
}

void CTrnMeasConv::doUpdateUflwOflw() {
    SPowSpan span = CalcPowSpan();
    const double high = detector_.Pow(65535.0);
    if (!(high > span.top)) span.top = high;
    if (!(span.bottom > kNoData)) span.bottom = kNoData;
    SetPowLimits(span);
}

double CTrnMeasConv::imgToPow(i32 img) const { return img == 0 ? kNoData : detector_.Pow(std::clamp(img, 1, 65535)); }

u16 CTrnMeasConv::powToImg(double pow) const {
    if (pow == kNoData) return 0;
    const u32 img = static_cast<u32>(TruncateTo<i32>(detector_.Count(pow) + 0.5));
    if (img > 65535) return 65535;  // a negative count has become a great one, deliberately
    return img ? static_cast<u16>(img) : u16{1};
}

float CTrnMeasConv::tempToRad(float celsius) { return static_cast<float>(Radiance(celsius, kLowWave, kHighWave, 1.0)); }

double CTrnMeasConv::clipPow(double pow, int* code) const {
    constexpr int kCodes[] = {1, 4, 3, 0, 2};  // of the status bits
    const u8 flags = clipOn_ ? limits_.Apply(pow) : u8{0};
    if (code) *code = kCodes[flags];
    return pow;
}
double CTrnMeasConv::imgToObjectSignal(i32 img, int* code) const { return powToObjSig(clipPow(imgToPow(img), code)); }
double CTrnMeasConv::imgToTemp(i32 img, int* code) const { return objSigToTemp(imgToObjectSignal(img, code)); }

/// The model's constants by value: an output buffer could alias the model's own, and the loops would have to read them
/// again for each element.
struct CTrnMeasConv::SKernel {
    STernDetector detector;
    bool clipOn;
    SLimitRule limits;
    double K1;
    double K2;

    double ObjectSignal(u16 img, u8& flags) const {
        double pow = img ? detector.Pow(img) : kNoData;
        flags = static_cast<u8>((img ? 0 : 32) | (clipOn ? limits.Apply(pow) : 0));
        return pow * K1 - K2;
    }
    double ObjectSignal(u16 img, u8* status) const {
        u8 unwanted = 0;
        return ObjectSignal(img, status ? *status : unwanted);
    }
};

CTrnMeasConv::SKernel CTrnMeasConv::Kernel() const { return {detector_, clipOn_, limits_, K1_, K2_}; }

auto CTrnMeasConv::TemperatureOf(ETempType scale) const {
    return
        [curve = Curve(), to = KelvinScale(scale)](double signal) { return to.FromKelvin(curve.Temperature(signal)); };
}

double CTrnMeasConv::imgToObjectSignal(u16 img, u8* status) const { return Kernel().ObjectSignal(img, status); }
double CTrnMeasConv::imgToTemp(u16 img, u8* status, ETempType scale) const {
    return TemperatureOf(scale)(imgToObjectSignal(img, status));
}
double CTrnMeasConv::imgToRad(u16 img, u8* status) const { return fit_.radiance().At(imgToObjectSignal(img, status)); }

u16 CTrnMeasConv::objectSignalToImg(double signal, u8* status) const {
    const double pow = objSigToPow(signal);
    const bool none = K1_ > 0 && pow == kNoData;
    const u32 img = none ? 0 : static_cast<u32>(RoundToInteger(detector_.Count(pow)));
    if (status) *status = none ? 32 : img > 65535 ? 4 : img == 0 ? 2 : 0;
    if (none) return 0;
    return static_cast<u16>(std::clamp(img, 1u, 65535u));
}
u16 CTrnMeasConv::radToImg(double radiance, u8* status) const {
    return objectSignalToImg(fit_.signal().At(radiance), status);
}
u16 CTrnMeasConv::tempToImg(double value, u8* status, ETempType scale) const {
    return objectSignalToImg(tempToObjSig(KelvinScale(scale).ToKelvin(value)), status);
}

template <class ValueOf>
void CTrnMeasConv::RunRange(u16 first, u16 last, float* out, u8* status, const ValueOf& valueOf) const {
    const SKernel kernel = Kernel();
    const u32 count = first <= last ? u32{last} - first + 1 : 0;
    for (u32 i = 0; i < count; ++i) {
        u8 flags = 0;
        out[i] = static_cast<float>(valueOf(kernel.ObjectSignal(static_cast<u16>(first + i), flags)));
        if (status) status[i] = flags;
    }
}

void CTrnMeasConv::imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const {
    RunRange(first, last, out, status, TemperatureOf(scale));
}
void CTrnMeasConv::imgToRad(u16 first, u16 last, float* out, u8* status) const {
    RunRange(first, last, out, status, [fit = fit_.radiance()](double signal) { return fit.At(signal); });
}
void CTrnMeasConv::imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const {
    RunRange(first, last, out, status, [](double signal) { return signal; });
}

template <class ValueOf>
void CTrnMeasConv::RunTyped(STypedData out, STypedData in, u8* status, u32 count, const ValueOf& valueOf) const {
    ForEachSignal(out, in, status, count, [kernel = Kernel(), valueOf](u32, u16 img, u8& flags) {
        return valueOf(kernel.ObjectSignal(img, flags));
    });
}

void CTrnMeasConv::imgToTemp(STypedData out, STypedData in, u8* status, u32 count, ETempType scale) const {
    RunTyped(out, in, status, count, TemperatureOf(scale));
}
void CTrnMeasConv::imgToRad(STypedData out, STypedData in, u8* status, u32 count) const {
    RunTyped(out, in, status, count, [fit = fit_.radiance()](double signal) { return fit.At(signal); });
}
void CTrnMeasConv::imgToObjectSignal(STypedData out, STypedData in, u8* status, u32 count) const {
    RunTyped(out, in, status, count, [](double signal) { return signal; });
}

void CTrnMeasConv::updateLUT() {
    const auto tables = std::make_shared<STables>();
    const auto temperatureOf = TemperatureOf(Celsius);
    const SKernel kernel = Kernel();
    for (u32 img = 0; img < kSignals; ++img) {
        const double signal = kernel.ObjectSignal(static_cast<u16>(img), tables->status[img]);
        tables->objectSignal[img] = static_cast<float>(signal);
        tables->celsius[img] = static_cast<float>(temperatureOf(signal));
        tables->radiance[img] = static_cast<float>(fit_.radiance().At(tables->objectSignal[img]));
    }
    tables_ = tables;
}

/// Which table, in which scale, and whose for which element.
struct CTrnMeasConv::STableForm {
    float (STables::*table)[kSignals];
    ETempType scale = Celsius;
    const u32* indices = nullptr;
    const u8* presetMap = nullptr;

    void Run(const CTrnMeasConv* models, STypedData out, STypedData in, u8* status, u32 count) const {
        static const STables kEmpty = {};
        ForEachSignal(out, in, status, count, [&](u32 i, u16 img, u8& flags) {
            const u32 preset = presetMap ? presetMap[indices ? indices[i] : i] : 0;
            const STables* tables = models[preset].tables_.get();
            if (!tables) tables = &kEmpty;
            flags = tables->status[img];
            const float value = (tables->*table)[img];
            return scale == Celsius ? value : CMath::ConvertTemperature(value, Celsius, scale);
        });
    }
};

void CTrnMeasConv::imgToTempLUT(STypedData out, STypedData in, u8* status, u32 count, ETempType scale) const {
    STableForm{&STables::celsius, scale}.Run(this, out, in, status, count);
}
void CTrnMeasConv::imgToRadLUT(STypedData out, STypedData in, u8* status, u32 count) const {
    STableForm{&STables::radiance}.Run(this, out, in, status, count);
}
void CTrnMeasConv::imgToObjectSignalLUT(STypedData out, STypedData in, u8* status, u32 count) const {
    STableForm{&STables::objectSignal}.Run(this, out, in, status, count);
}
void CTrnMeasConv::imgToTempLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap,
                                u8* status, u32 count, ETempType scale) {
    STableForm{&STables::celsius, scale, nullptr, presetMap}.Run(models, out, in, status, count);
}
void CTrnMeasConv::imgToRadLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap,
                               u8* status, u32 count) {
    STableForm{&STables::radiance, Celsius, nullptr, presetMap}.Run(models, out, in, status, count);
}
void CTrnMeasConv::imgToObjectSignalLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u8* presetMap,
                                        u8* status, u32 count) {
    STableForm{&STables::objectSignal, Celsius, nullptr, presetMap}.Run(models, out, in, status, count);
}
void CTrnMeasConv::imgToTempLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                                const u8* presetMap, u8* status, u32 count, ETempType scale) {
    STableForm{&STables::celsius, scale, indices, presetMap}.Run(models, out, in, status, count);
}
void CTrnMeasConv::imgToRadLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                               const u8* presetMap, u8* status, u32 count) {
    STableForm{&STables::radiance, Celsius, indices, presetMap}.Run(models, out, in, status, count);
}
void CTrnMeasConv::imgToObjectSignalLUT(const CTrnMeasConv models[], STypedData out, STypedData in, const u32* indices,
                                        const u8* presetMap, u8* status, u32 count) {
    STableForm{&STables::objectSignal, Celsius, indices, presetMap}.Run(models, out, in, status, count);
}

}  // namespace ovix::reduce
