#include "reduce/pixels/temperature.h"

#include <algorithm>

#include "bench/support/data.h"
#include "reduce/pixels/radiance.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

/// The models of a calibration, each as the kernel runs it and as the arithmetic alone in one loop.
enum class EModel { Table, Polynomial, Planck };

constexpr double kLine[] = {-0.004, 2e-6};
constexpr double kPolynomial[] = {-48, 4000, -1e4};
constexpr SCommonParams kCommon{1, 0.875, Celsius, 12, 8};

struct SData {
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<float>> out;
    std::vector<double> radiances, temperatures;

    explicit SData(const SRun& run) : in(SceneLanes(run)), out(Lanes<float>(run)) {
        for (double t = -40; t <= 250; t += 5) {
            temperatures.push_back(t);
            radiances.push_back(Radiance(t, kCommon.lowWave, kCommon.highWave, 1));
        }
    }
    STemperatureParams Params(EModel model) const {
        STemperatureParams params;
        if (model == EModel::Table) {
            params.radiances = const_cast<double*>(radiances.data());
            params.temperatures = const_cast<double*>(temperatures.data());
            params.tableSize = static_cast<i32>(radiances.size());
        } else if (model == EModel::Polynomial) {
            params.coefficients = const_cast<double*>(kPolynomial);
            params.order = 2;
        }
        return params;
    }
    float Table(double x) const {
        const auto upper = std::clamp<std::ptrdiff_t>(
            std::lower_bound(radiances.begin(), radiances.end(), x) - radiances.begin(), 1, std::ssize(radiances) - 1);
        const auto m = static_cast<std::size_t>(upper);
        return static_cast<float>((x - radiances[m - 1]) / (radiances[m] - radiances[m - 1]) *
                                      (temperatures[m] - temperatures[m - 1]) +
                                  temperatures[m - 1]);
    }
};

template <class F>
void ForEach(const std::vector<u16>& in, float* out, const F& toTemperature) {
    for (std::size_t i = 0; i < in.size(); ++i) out[i] = toTemperature(kLine[0] + kLine[1] * in[i]);
}

void Bare(EModel model, const SData& data, const std::vector<u16>& in, float* out) {
    const double scale = kCommon.signalScale;
    switch (model) {
        case EModel::Table:
            return ForEach(in, out, [&](double r) { return data.Table(r / scale); });
        case EModel::Polynomial:
            return ForEach(in, out, [=](double r) {
                const double x = r / scale;
                return static_cast<float>(kPolynomial[0] + kPolynomial[1] * x + kPolynomial[2] * (x * x));
            });
        case EModel::Planck:
            return ForEach(in, out, [=](double r) {
                return static_cast<float>(14388.3 / (std::log(4 * 11910.66 * scale / (1e5 * r) + 1.0) * 10) - 273.15);
            });
    }
}

SJob Make(const SRun& run, EModel model, bool bare) {
    const auto data = std::make_shared<SData>(run);
    SJob job;
    job.run = [=](u32 lane) {
        if (bare) return Bare(model, *data, data->in[lane], data->out[lane].data());
        const SRadianceParams line{const_cast<double*>(kLine), 1, 0, nullptr};  // which the kernels only read
        CountsToTemperature({data->in[lane].data(), UInt16}, {data->out[lane].data(), Flt32}, run.Pixels(), line,
                            data->Params(model), kCommon);
    };
    job.prove = [=] {
        std::vector<float> expected(run.Pixels());
        Bare(model, *data, data->in[0], expected.data());
        return FirstDifference(data->out[0], expected);
    };
    return job;
}

const CKernelEntry kTable({
    .name = "CountsToTemperature, table",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Table, false); },
    .beside = "bare: counts, line, table",
});
const CKernelEntry kBareTable({
    .name = "bare: counts, line, table",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Table, true); },
});
const CKernelEntry kPolynomialRow({
    .name = "CountsToTemperature, polynomial",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Polynomial, false); },
    .beside = "bare: counts, line, polynomial",
});
const CKernelEntry kBarePolynomial({
    .name = "bare: counts, line, polynomial",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Polynomial, true); },
});
const CKernelEntry kPlanck({
    .name = "CountsToTemperature, Planck",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Planck, false); },
    .beside = "bare: counts, line, Planck",
});
const CKernelEntry kBarePlanck({
    .name = "bare: counts, line, Planck",
    .bytesPerPixel = 6,
    .make = [](const SRun& run) { return Make(run, EModel::Planck, true); },
});

}  // namespace

}  // namespace ovix::bench
