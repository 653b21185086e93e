#include "bench/support/data.h"
#include "reduce/convert/user_converter.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "reduce/pixels/correction_objects.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

constexpr double kOffset = -0.004, kGain = 2e-6, kLow = 8, kHigh = 12;

/// Two presets, one of which sees twice the radiance for a count. A merged frame takes its bright parts from that.
struct SData {
    CReduceObjectArray array;
    CUserConverter converter;
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<u8>> maps;
    std::vector<std::vector<float>> out;
    std::vector<std::vector<u8>> status;

    explicit SData(const SRun& run)
        : in(SceneLanes(run)), maps(Lanes<u8>(run)), out(Lanes<float>(run)), status(Lanes<u8>(run)) {
        const auto object = array.Get<CRCalReduceObject>(-1, true);
        object->valid = true;
        object->cal.SetBandpass(kLow, kHigh);
        object->cal.SetPolynomial(0, 1, {kOffset, kGain});
        object->cal.SetPolynomial(1, 1, {2 * kOffset, 2 * kGain});
        bool presets[] = {true, true};
        converter.Update(Counts, Celsius, array, TemperatureUser, Celsius, presets, 2, 0);
        for (u32 lane = 0; lane < run.lanes; ++lane) {
            for (u32 i = 0; i < run.Pixels(); ++i) maps[lane][i] = in[lane][i] > 7000 ? 1 : 0;
        }
    }

    static float Temperature(u16 count, u8 preset) {
        const double radiance = static_cast<float>((kOffset + kGain * count) * (preset + 1));
        return static_cast<float>(14388.3 / (std::log(4 * 11910.66 / (1e5 * radiance) + 1.0) * 10) - 273.15);
    }
};

SJob Make(const SRun& run, bool byMap) {
    const auto data = std::make_shared<SData>(run);
    SJob job;
    job.run = [=](u32 lane) {
        const STypedData in{data->in[lane].data(), UInt16}, out{data->out[lane].data(), Flt32};
        if (byMap) {
            data->converter.BaseToOutput(in, data->maps[lane].data(), out, data->status[lane].data(), run.Pixels());
        } else {
            data->converter.BaseToOutput(in, out, data->status[lane].data(), run.Pixels());
        }
    };
    job.prove = [=] {
        std::vector<float> expected;
        for (u32 i = 0; i < run.Pixels(); ++i) {
            expected.push_back(SData::Temperature(data->in[0][i], byMap ? data->maps[0][i] : u8{0}));
        }
        return FirstDifference(data->out[0], expected);
    };
    return job;
}

const CKernelEntry kTable({
    .name = "User calibration, table",
    .bytesPerPixel = 7,
    .make = [](const SRun& run) { return Make(run, false); },
});

const CKernelEntry kMap({
    .name = "User calibration, preset map",
    .bytesPerPixel = 8,
    .make = [](const SRun& run) { return Make(run, true); },
    .beside = "User calibration, table",
    .mostBeside = 1.3,
});

const CKernelEntry kUpdateLUT({
    .name = "User UpdateLUT",
    .bytesPerPixel = 5,
    .make =
        [](const SRun&) {
            const auto data = std::make_shared<SData>(SRun{.width = 2, .height = 1});
            data->array.GetObjectParameters(true)->emissivity = 1;
            return SJob{[=](u32) {
                            data->converter.ChangeObjectParameters(data->array.GetObjectParameters(false).ptr());
                            data->converter.UpdateLUT(0);
                        },
                        [=] {
                            u16 in[] = {7000, 7001};
                            float found[2];
                            data->converter.BaseToOutput({in, UInt16}, {found, Flt32}, nullptr, 2u);
                            const float expected[] = {SData::Temperature(7000, 0), SData::Temperature(7001, 0)};
                            return FirstDifference(found, expected);
                        }};
        },
    .beside = "std::log alone, 65536",
    .entries = 65536,
});

}  // namespace

}  // namespace ovix::bench
