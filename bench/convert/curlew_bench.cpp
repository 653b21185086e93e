#include <tbb/parallel_invoke.h>

#include <algorithm>
#include <memory>

#include "bench/support/data.h"
#include "bench/support/peers.h"
#include "reduce/convert/convert_context.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/factory_converters.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/correction_objects.h"
#include "reduce/pixels/stats.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

constexpr u32 kEntries = 65536;
constexpr float kGain = 0.02f, kR = 18000.0f, kB = 1450.0f, kF = 1.0f;

/// A source of a linear camera that sees a black body through nothing.
struct SSource {
    CReduceObjectArray array;

    SSource() {
        array.GetSourceInfo(true)->baseUnit = Counts;
        array.GetObjectParameters(true)->atmosphereTrans = 1.0f;
        const auto cal = array.Get<CCurlewFactoryCalReduceObject>(0, true);
        cal->gain = kGain;
        cal->imgMin = 1;
        cal->imgMax = 65534;
        cal->planckR = kR;
        cal->planckB = kB;
        cal->planckF = kF;
        cal->lowerTemp = cal->underflowTemp = 200.0f;
        cal->upperTemp = cal->overflowTemp = 500.0f;
        cal->valid = true;
    }
};

/// Celsius of a count that lies inside the calibrated range.
float Celsius(double count) { return static_cast<float>(kB / std::log(kR / (count * kGain) + kF) - 273.15); }

const CKernelEntry kUpdateLUT({
    .name = "Curlew UpdateLUT",
    .bytesPerPixel = 5,
    .make =
        [](const SRun&) {
            struct SData {
                SSource source;
                CCurlewConverter converter;
            };
            const auto data = std::make_shared<SData>();
            bool presets[] = {true};
            data->converter.Update(Counts, ovix::Celsius, data->source.array, TemperatureFactory, ovix::Celsius,
                                   presets, 1, 0);
            return SJob{[=](u32) {
                            data->converter.ChangeObjectParameters(data->source.array.GetObjectParameters(false).ptr());
                            data->converter.UpdateLUT();
                        },
                        [=] {
                            float found[2];
                            data->converter.SignalToOutput(7000, 7002, found, nullptr, 0);  // the table's: one fewer
                            const float expected[] = {Celsius(7000), Celsius(7001)};
                            return FirstDifference(found, expected);
                        }};
        },
    .beside = "std::log alone, 65536",
    .entries = kEntries,
});

const CKernelEntry kBareLog({
    .name = "std::log alone, 65536",
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

/// A frame of counts, corrected, converted to temperatures with their status, and its figures.
struct SChain {
    SSource source;
    STables tables;
    CConvertContext context;
    std::vector<std::vector<u16>> in;
    std::vector<u16> corrected;
    std::vector<std::vector<float>> out;
    std::vector<std::vector<u8>> status;
    CStats stats;
    SRun run;
    std::vector<float> lut = std::vector<float>(65536);  ///< for who does it by hand
    std::vector<u8> statusLut = std::vector<u8>(65536 + 3);

    explicit SChain(const SRun& r)
        : tables(r), in(SceneLanes(r)), corrected(r.Pixels()), out(Lanes<float>(r)), status(Lanes<u8>(r)), run(r) {
        const auto correction = source.array.GetCorrection(0, true);
        correction->Create(r.width, r.height, 0, CorrectionGain | CorrectionOffset | CorrectionBadPixels);
        std::copy(tables.gain.begin(), tables.gain.end(), correction->gain.get());
        std::copy(tables.offset.begin(), tables.offset.end(), correction->offset.get());
        std::copy(tables.replace.begin(), tables.replace.end(), correction->map.get());
        bool presets[] = {true};
        context.setReduceObjs(&source.array);
        context.SetUnit(TemperatureFactory, ovix::Celsius);
        context.Update(presets, 1, 0);
        for (u32 k = 1; k < 65536; ++k) lut[k] = Celsius(k);
    }

    void InThreeCalls(u32 lane) {
        STypedData counts{in[lane].data(), UInt16};
        const STypedData result{out[lane].data(), Flt32};
        context.ApplyNUC(counts, {corrected.data(), UInt16}, run.Pixels(), counts);
        context.Convert(counts, result, status[lane].data(), run.Pixels());
        GetStats(stats, result, run.width, run.height, nullptr, 0, status[lane].data());
    }
    void InOneCall(u32 lane) {
        context.MeasureFrame({in[lane].data(), UInt16}, run.width, run.height, {out[lane].data(), Flt32},
                             status[lane].data(), stats);
    }
    std::string Difference() const {
        std::vector<float> expected;
        for (u32 i = 0; i < run.Pixels(); ++i) {
            const u32 j = tables.replace[i];
            const float count = static_cast<float>(in[0][j]) * tables.gain[j] + static_cast<float>(tables.offset[j]);
            expected.push_back(Celsius(static_cast<u16>(count)));
        }
        const std::string difference = FirstDifference(out[0], expected);
        const bool sameHighest = stats.maximum == *std::max_element(expected.begin(), expected.end());
        return !difference.empty() || sameHighest ? difference : "another maximum";
    }
};

const char* const kStepsName = "ApplyNUC, Convert, GetStats";
const CKernelEntry kSteps({
    .name = kStepsName,
    .bytesPerPixel = 14 + 7 + 5,
    .streamedBytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            const auto chain = std::make_shared<SChain>(run);
            return SJob{[=](u32 lane) { chain->InThreeCalls(lane); }, [=] { return chain->Difference(); }};
        },
});

/// What comes and goes in one pass: source and three tables, values and status.
constexpr double kChainBytes = 2 + 4 + 2 + 4 + 4 + 1;
const char* const kChainName = "MeasureFrame";
const CKernelEntry kChain({
    .name = kChainName,
    .bytesPerPixel = kChainBytes,
    .streamedBytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            const auto chain = std::make_shared<SChain>(run);
            return SJob{[=](u32 lane) { chain->InOneCall(lane); },
                        [=] { return chain->Difference(); },
                        {},
                        ChainPeers(chain->in, chain->out, chain->status, chain->tables, chain->lut, chain->statusLut)};
        },
    .beside = kStepsName,
    .mostBeside = 0.8,
});

/// Times are those of one of the two frames.
const CKernelEntry kTwoChains({
    .name = "MeasureFrame, two at once",
    .bytesPerPixel = kChainBytes,
    .streamedBytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            const auto first = std::make_shared<SChain>(run), second = std::make_shared<SChain>(run);
            return SJob{[=](u32 lane) {
                            tbb::parallel_invoke([&] { first->InOneCall(lane); }, [&] { second->InOneCall(lane); });
                        },
                        [=] { return first->Difference() + second->Difference(); }};
        },
    .beside = kChainName,
    .mostBeside = 1 / 1.9,
    .calls = 2,
});

}  // namespace

}  // namespace ovix::bench
