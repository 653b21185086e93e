#include <algorithm>

#include "bench/support/data.h"
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
const CKernelEntry kChain({
    .name = "ApplyNUC, Convert, GetStats",
    .bytesPerPixel = 14 + 7 + 5,
    .streamedBytesPerPixel = 7,
    .make =
        [](const SRun& run) {
            struct SData {
                SSource source;
                STables tables;
                CConvertContext context;
                std::vector<std::vector<u16>> in;
                std::vector<u16> corrected;
                std::vector<std::vector<float>> out;
                std::vector<std::vector<u8>> status;
                CStats stats;

                explicit SData(const SRun& r)
                    : tables(r), in(SceneLanes(r)), corrected(r.Pixels()), out(Lanes<float>(r)), status(Lanes<u8>(r)) {
                    const auto correction = source.array.GetCorrection(0, true);
                    correction->Create(r.width, r.height, 0, CorrectionGain | CorrectionOffset | CorrectionBadPixels);
                    std::copy(tables.gain.begin(), tables.gain.end(), correction->gain.get());
                    std::copy(tables.offset.begin(), tables.offset.end(), correction->offset.get());
                    std::copy(tables.replace.begin(), tables.replace.end(), correction->map.get());
                    bool presets[] = {true};
                    context.setReduceObjs(&source.array);
                    context.SetUnit(TemperatureFactory, ovix::Celsius);
                    context.Update(presets, 1, 0);
                }
            };
            const auto data = std::make_shared<SData>(run);
            return SJob{[=](u32 lane) {
                            STypedData counts{data->in[lane].data(), UInt16};
                            const STypedData result{data->out[lane].data(), Flt32};
                            data->context.ApplyNUC(counts, {data->corrected.data(), UInt16}, run.Pixels(), counts);
                            data->context.Convert(counts, result, data->status[lane].data(), run.Pixels());
                            GetStats(data->stats, result, data->status[lane].data(), run.width, run.height);
                        },
                        [=] {
                            std::vector<float> expected;
                            for (u32 i = 0; i < run.Pixels(); ++i) {
                                const u32 j = data->tables.replace[i];
                                const float count = static_cast<float>(data->in[0][j]) * data->tables.gain[j] +
                                                    static_cast<float>(data->tables.offset[j]);
                                expected.push_back(Celsius(static_cast<u16>(count)));
                            }
                            const double highest = *std::max_element(expected.begin(), expected.end());
                            const std::string difference = FirstDifference(data->out[0], expected);
                            return !difference.empty() || data->stats.maximum == highest ? difference
                                                                                         : "another maximum";
                        }};
        },
});

}  // namespace

}  // namespace ovix::bench
