#include <tbb/global_control.h>

#include "bench/support/data.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/factory_converters.h"
#include "reduce/convert/meas_conv.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

/// The models of the three camera families by their formulas, and the tables of those with one for each preset.
namespace ovix::bench {

namespace {

using namespace ovix::reduce;

constexpr u32 kEntries = 16384;
constexpr float kGain = 1.1f, kR = 2.2e8f, kB = 3300.0f, kF = 1.0f;

/// The object signal of a count is its product with the gain: a black body, and nothing in between.
double Kelvin(double signal) { return kB / std::log(kR / signal + kF); }
float CelsiusOf(u16 count) { return static_cast<float>(Kelvin(count * double{kGain}) - 273.15); }

template <class Record>
void FillCurve(Record& record) {
    record.planckR = kR;
    record.planckB = kB;
    record.planckF = kF;
}
/// Wide enough for all counts of the scene.
template <class Record>
void FillLimits(Record& record) {
    record.lowerTemp = record.underflowTemp = 200.0f;
    record.upperTemp = record.overflowTemp = 500.0f;
}

struct SScene {
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<float>> out;
    std::vector<std::vector<u8>> status;
    std::vector<std::vector<u8>> maps;

    explicit SScene(const SRun& run)
        : in(SceneLanes(run)), out(Lanes<float>(run)), status(Lanes<u8>(run)), maps(Lanes<u8>(run)) {
        for (u32 lane = 0; lane < run.lanes; ++lane) {  // a merged frame takes its bright parts from another preset
            for (u32 i = 0; i < run.Pixels(); ++i) maps[lane][i] = in[lane][i] > 7000 ? 1 : 0;
        }
    }
};

/// `convert(scene, lane, pixels)` with every pixel inside the calibrated range.
SJob ToCelsius(const SRun& run, auto convert, auto celsiusOf) {
    const auto scene = std::make_shared<SScene>(run);
    return {[=](u32 lane) { convert(*scene, lane, run.Pixels()); },
            [=] {
                std::vector<float> expected;
                for (const u16 count : scene->in[0]) expected.push_back(celsiusOf(count));
                const std::string difference = FirstDifference(scene->out[0], expected);
                return difference.empty() ? FirstDifference(scene->status[0], std::vector<u8>(run.Pixels()))
                                          : difference;
            }};
}

const char* const kBareName = "bare: counts, object signal, Planck";

const CKernelEntry kBare({
    .name = kBareName,
    .bytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            return ToCelsius(
                run,
                [](SScene& s, u32 lane, u32 count) {
                    const double gain = kGain, K1 = 1, K2 = 0;
                    for (u32 i = 0; i < count; ++i) {
                        s.out[lane][i] = static_cast<float>(Kelvin(s.in[lane][i] * gain * K1 - K2) - 273.15);
                    }
                },
                CelsiusOf);
        },
});

const CKernelEntry kCurlew({
    .name = "Curlew imgToTemp",
    .bytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            SAdjustParams adjust;
            adjust.gain = kGain;
            SCalibParams calib;
            FillCurve(calib);
            FillLimits(calib);
            const auto model = std::make_shared<CMeasConv>(&adjust, nullptr, &calib);
            model->setDefObjPar();
            return ToCelsius(
                run,
                [=](SScene& s, u32 lane, u32 count) {
                    model->imgToTemp(s.out[lane].data(), s.in[lane].data(), s.status[lane].data(), count, Celsius);
                },
                CelsiusOf);
        },
    .beside = kBareName,
});

const CKernelEntry kTern({
    .name = "Tern imgToTemp",
    .bytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            _adjust_par_t adjust;
            adjust.mode = 2;
            adjust.gain = kGain;
            _cal_param_t calib;
            FillCurve(calib);
            FillLimits(calib);
            const auto model = std::make_shared<CTrnMeasConv>(&adjust, nullptr, nullptr, &calib);
            model->setDefObjPar();
            return ToCelsius(
                run,
                [=](SScene& s, u32 lane, u32 count) {
                    const STypedData out{s.out[lane].data(), Flt32}, in{s.in[lane].data(), UInt16};
                    model->imgToTemp(out, in, s.status[lane].data(), count, Celsius);
                },
                CelsiusOf);
        },
    .beside = kBareName,
});

void FillMerlin(CMerlinFactoryCalReduceObject& cal, double gain) {
    FillCurve(cal);
    cal.degree = 1;
    cal.c[1] = gain;
    cal.lowTemp = -70.0f;
    cal.highTemp = 220.0f;
}

SJob Merlin(const SRun& run, std::size_t threads) {
    CMerlinFactoryCalReduceObject cal;
    FillMerlin(cal, kGain);
    CObjectParametersReduceObject params;
    params.atmosphereTrans = 1.0f;
    const auto model = std::make_shared<CMrlConv>();
    model->Init(cal, params);
    return ToCelsius(
        run,
        [=](SScene& s, u32 lane, u32 count) {
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
            model->SignalToTemperature(s.in[lane].data(), s.out[lane].data(), s.status[lane].data(), count, Celsius);
        },
        [](u16 count) {  // radiance and kelvin are narrowed on the way
            const float kelvin = static_cast<float>(Kelvin(static_cast<float>(count * double{kGain})));
            return static_cast<float>(kelvin - 273.15);
        });
}

const CKernelEntry kMerlin({
    .name = "Merlin SignalToTemperature, 1 thread",
    .bytesPerPixel = 7,
    .make = [](const SRun& run) { return Merlin(run, 1); },
    .beside = kBareName,
});
const CKernelEntry kMerlinTwo({
    .name = "Merlin SignalToTemperature, 2 threads",
    .bytesPerPixel = 7,
    .make = [](const SRun& run) { return Merlin(run, 2); },
    .beside = "Merlin SignalToTemperature, 1 thread",
});

/// Two presets, of which the second sees half the signal for a count.
void FillPreset(CTernFactoryCalReduceObject& cal, u8 preset) {
    FillCurve(cal);
    FillLimits(cal);
    cal.adjustGain = kGain / static_cast<float>(preset + 1);
}
void FillPreset(CMerlinFactoryCalReduceObject& cal, u8 preset) { FillMerlin(cal, double{kGain} / (preset + 1)); }

template <class Converter, class Cal>
struct SConverter {
    CReduceObjectArray array;
    Converter converter;

    SConverter() {
        array.GetObjectParameters(true)->atmosphereTrans = 1.0f;
        for (u8 p = 0; p < 2; ++p) {
            const auto cal = array.Get<Cal>(p, true);
            FillPreset(*cal, p);
            cal->valid = true;
        }
        bool presets[] = {true, true};
        converter.Update(Counts, Celsius, array, TemperatureFactory, Celsius, presets, 2, 0);
    }
};

template <class Converter, class Cal>
SJob UpdateTable(const SRun&) {
    const auto data = std::make_shared<SConverter<Converter, Cal>>();
    return {[=](u32) {
                data->converter.ChangeObjectParameters(data->array.GetObjectParameters(false).ptr());
                data->converter.UpdateLUT(0);
            },
            [=] {
                u16 in[] = {7000, 7001};
                float found[2];
                data->converter.BaseToOutput({in, UInt16}, {found, Flt32}, nullptr, 2u);
                const bool same =
                    std::abs(found[0] - CelsiusOf(7000)) < 1e-4f && std::abs(found[1] - CelsiusOf(7001)) < 1e-4f;
                return std::string(same ? "" : "another temperature");
            }};
}

const char* const kBareLogName = "std::log alone, 16384";

const CKernelEntry kBareLog({
    .name = kBareLogName,
    .bytesPerPixel = 12,
    .make =
        [](const SRun&) {
            struct SData {
                std::vector<double> in;
                std::vector<float> out = std::vector<float>(kEntries);
            };
            const auto data = std::make_shared<SData>();
            for (u32 i = 0; i < kEntries; ++i) data->in.push_back(kR / ((i + 1.0) * kGain) + kF);
            return SJob{[=](u32) {
                            for (u32 i = 0; i < kEntries; ++i) data->out[i] = static_cast<float>(std::log(data->in[i]));
                        },
                        [] { return std::string(); }};
        },
    .entries = kEntries,
});
const CKernelEntry kTernTable({
    .name = "Tern UpdateLUT",
    .bytesPerPixel = 5,
    .make = UpdateTable<CTernConverter, CTernFactoryCalReduceObject>,
    .beside = kBareLogName,
    .entries = kEntries,
});
const CKernelEntry kMerlinTable({
    .name = "Merlin UpdateLUT",
    .bytesPerPixel = 5,
    .make = UpdateTable<CMerlinConverter, CMerlinFactoryCalReduceObject>,
    .beside = kBareLogName,
    .entries = kEntries,
});

SJob ThroughTables(const SRun& run, bool byMap) {
    struct SData : SScene, SConverter<CTernConverter, CTernFactoryCalReduceObject> {
        using SScene::SScene;
    };
    const auto data = std::make_shared<SData>(run);
    return {[=](u32 lane) {
                const STypedData in{data->in[lane].data(), UInt16}, to{data->out[lane].data(), Flt32};
                u8* status = data->status[lane].data();
                if (byMap) {
                    data->converter.BaseToOutput(in, data->maps[lane].data(), to, status, run.Pixels());
                } else {
                    data->converter.BaseToOutput(in, to, status, run.Pixels());
                }
            },
            [=] {
                for (u32 i = 0; i < run.Pixels(); ++i) {
                    const bool second = byMap && data->maps[0][i];
                    const double signal = data->in[0][i] * double{second ? kGain / 2 : kGain};
                    if (std::abs(data->out[0][i] - (Kelvin(signal) - 273.15)) > 1e-4) return std::to_string(i);
                }
                return std::string();
            }};
}

const CKernelEntry kTernFrame({
    .name = "Tern calibration, table",
    .bytesPerPixel = 7,
    .make = [](const SRun& run) { return ThroughTables(run, false); },
});
const CKernelEntry kTernMap({
    .name = "Tern calibration, preset map",
    .bytesPerPixel = 8,
    .make = [](const SRun& run) { return ThroughTables(run, true); },
    .beside = "Tern calibration, table",
    .mostBeside = 1.3,
});

}  // namespace

}  // namespace ovix::bench
