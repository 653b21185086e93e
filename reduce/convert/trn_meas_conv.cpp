#include "reduce/convert/trn_meas_conv.h"

#include <algorithm>
#include <cmath>

#include "core/typed_data.h"
#include "core/visit.h"
#include "reduce/convert/signal_model-inl.h"
#include "reduce/convert/signal_runs.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/simd/model_simd.h"

namespace ovix::reduce {

template class TSignalModel<_object_par_t, _cal_param_t>;

namespace {

constexpr double kNoData = -1.0;  ///< the pow of a count of 0

constexpr double kLowWave = 3.0;  // micrometres
constexpr double kHighWave = 5.0;

constexpr u16 kTopSignal = CTrnMeasConv::kSignals - 1;

double PowOf(const STernDetector& detector, double count) {
    const double v = detector.compensates ? count * detector.driftGain + detector.driftOffset : count;
    return detector.adjusts ? (v - detector.offset) * detector.gain : v;
}
double CountOf(const STernDetector& detector, double pow) {
    const double v = detector.adjusts ? pow / detector.gain + detector.offset : pow;
    return detector.compensates ? (v - detector.driftOffset) / detector.driftGain : v;
}

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
    ForEachBlockOf(count, [&](u32 at, u32 n) {
        u16 signals[kSignalBlock];
        double results[kSignalBlock];
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
    });
}

}  // namespace

CTrnMeasConv::CTrnMeasConv() : CTrnMeasConv(nullptr, nullptr, nullptr, nullptr) {}

CTrnMeasConv::CTrnMeasConv(const _adjust_par_t* adjust, const _tdrift_par_t* tdrift, const _object_par_t* object,
                           const _cal_param_t* calib)
    : TSignalModel(kLowWave, kHighWave, true) {
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
    const double high = PowOf(detector_, 65535.0);
    if (!(high > span.top)) span.top = high;
    if (!(span.bottom > kNoData)) span.bottom = kNoData;
    SetPowLimits(span);
}

double CTrnMeasConv::imgToPow(i32 img) const {
    return img == 0 ? kNoData : PowOf(detector_, std::clamp(img, 1, 65535));
}

u16 CTrnMeasConv::powToImg(double pow) const {
    if (pow == kNoData) return 0;
    const u32 img = static_cast<u32>(TruncateTo<i32>(CountOf(detector_, pow) + 0.5));
    if (img > 65535) return 65535;  // a negative count has become a great one: callers hold counts made so
    return img ? static_cast<u16>(img) : u16{1};
}

u16 CTrnMeasConv::tempToImg(double kelvin) const { return powToImg(objSigToPow(tempToObjSig(kelvin))); }

float CTrnMeasConv::tempToRad(float celsius) { return static_cast<float>(Radiance(celsius, kLowWave, kHighWave, 1.0)); }

double CTrnMeasConv::clipPow(double pow, int* code) const {
    constexpr int kCodes[] = {1, 4, 3, 0, 2};  // of the status bits
    const u8 flags = clipOn_ ? Limit(pow, limits_) : u8{0};
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
    SSignalUnit to;

    double ObjectSignalOf(u16 img, u8& flags) const {
        double pow = img ? PowOf(detector, img) : kNoData;
        flags = static_cast<u8>((img ? 0 : 32) | (clipOn ? Limit(pow, limits) : 0));
        return pow * K1 - K2;
    }
    double ValueOf(u16 img, u8* status) const {
        u8 unwanted = 0;
        return to.ValueOf(ObjectSignalOf(img, status ? *status : unwanted));
    }

    /// A block of signals of any 16 bits.
    void operator()(const u16* counts, u32 n, float* out, u8* status) const {
        double values[kSignalBlock];
        u8 flags[kSignalBlock] = {};
        std::transform(counts, counts + n, values, [d = detector](u16 img) { return img ? PowOf(d, img) : kNoData; });
        if (clipOn) simd::LimitAll(limits, values, flags, n);
        for (u32 i = 0; status && i < n; ++i) status[i] = static_cast<u8>(flags[i] | (counts[i] ? 0 : 32));
        std::transform(values, values + n, values, [k1 = K1, k2 = K2](double pow) { return pow * k1 - k2; });
        to.ValuesOf(values, n, out);
    }

    void Run(STypedData out, STypedData in, u8* status, u32 count) const {
        if (in.type == UInt16 && out.type == Flt32) {  // as a frame is
            return RunSignals(static_cast<const u16*>(in.data), static_cast<float*>(out.data), status, count,
                              [this](const u16* counts, u32 n, float* values, u8* flags) {
                                  u16 limited[kSignalBlock];
                                  std::transform(counts, counts + n, limited,
                                                 [](u16 img) { return std::min(img, kTopSignal); });
                                  (*this)(limited, n, values, flags);
                              });
        }
        ForEachSignal(out, in, status, count,
                      [this](u32, u16 img, u8& flags) { return to.ValueOf(ObjectSignalOf(img, flags)); });
    }
};

CTrnMeasConv::SKernel CTrnMeasConv::Kernel(EUnit unit, ETempType scale) const {
    return {detector_, clipOn_, limits_, K1_, K2_, In(unit, scale)};
}

double CTrnMeasConv::imgToObjectSignal(u16 img, u8* status) const { return Kernel(ObjectSignal).ValueOf(img, status); }
double CTrnMeasConv::imgToTemp(u16 img, u8* status, ETempType scale) const {
    return Kernel(TemperatureFactory, scale).ValueOf(img, status);
}
double CTrnMeasConv::imgToRad(u16 img, u8* status) const { return Kernel(RadianceFactory).ValueOf(img, status); }

u16 CTrnMeasConv::objectSignalToImg(double signal, u8* status) const {
    const double pow = objSigToPow(signal);
    const bool none = K1_ > 0 && pow == kNoData;
    const u32 img = none ? 0 : static_cast<u32>(RoundToInteger(CountOf(detector_, pow)));
    if (status) *status = none ? 32 : img > 65535 ? 4 : img == 0 ? 2 : 0;
    if (none) return 0;
    return static_cast<u16>(std::clamp(img, 1u, 65535u));
}
u16 CTrnMeasConv::radToImg(double radiance, u8* status) const {
    return objectSignalToImg(At(fit_.signal, radiance), status);
}
u16 CTrnMeasConv::tempToImg(double value, u8* status, ETempType scale) const {
    return objectSignalToImg(tempToObjSig(TemperatureScale(scale).ToKelvin(value)), status);
}

void CTrnMeasConv::imgToTemp(u16 first, u16 last, float* out, u8* status, ETempType scale) const {
    RunRange(first, last, out, status, Kernel(TemperatureFactory, scale));
}
void CTrnMeasConv::imgToRad(u16 first, u16 last, float* out, u8* status) const {
    RunRange(first, last, out, status, Kernel(RadianceFactory));
}
void CTrnMeasConv::imgToObjectSignal(u16 first, u16 last, float* out, u8* status) const {
    RunRange(first, last, out, status, Kernel(ObjectSignal));
}

void CTrnMeasConv::imgToTemp(STypedData out, STypedData in, u8* status, u32 count, ETempType scale) const {
    Kernel(TemperatureFactory, scale).Run(out, in, status, count);
}
void CTrnMeasConv::imgToRad(STypedData out, STypedData in, u8* status, u32 count) const {
    Kernel(RadianceFactory).Run(out, in, status, count);
}
void CTrnMeasConv::imgToObjectSignal(STypedData out, STypedData in, u8* status, u32 count) const {
    Kernel(ObjectSignal).Run(out, in, status, count);
}

void CTrnMeasConv::updateLUT() {
    const auto tables = std::make_shared<STables>();
    RunRange(0, kTopSignal, tables->celsius, tables->status, Kernel(TemperatureFactory, Celsius));
    RunRange(0, kTopSignal, tables->objectSignal, nullptr, Kernel(ObjectSignal));
    // Of the table that was narrowed, not of the signals.
    std::transform(tables->objectSignal, tables->objectSignal + kSignals, tables->radiance,
                   [fit = fit_.radiance](float signal) { return static_cast<float>(At(fit, signal)); });
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
