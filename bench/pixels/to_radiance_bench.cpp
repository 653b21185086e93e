#include "reduce/pixels/radiance.h"

#include "bench/support/data.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

constexpr double kCoefficients[] = {-1.5, 2e-3, 3e-8};

struct SData {
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<float>> out;

    explicit SData(const SRun& run) : in(SceneLanes(run)), out(Lanes<float>(run)) {}
};

SJob Make(const SRun& run, int order) {
    const auto data = std::make_shared<SData>(run);
    return {[=](u32 lane) {
                ToRadiance({data->out[lane].data(), Flt32}, {data->in[lane].data(), UInt16}, run.Pixels(),
                           kCoefficients, order, 0.0, 0.9);
            },
            [=] {
                std::vector<float> expected;
                for (const u16 count : data->in[0]) {
                    const double c = count, *a = kCoefficients;
                    const double sum = a[0] + a[1] * c + (order == 2 ? a[2] * (c * c) : 0);
                    expected.push_back(static_cast<float>(sum * 0.9));
                }
                return FirstDifference(data->out[0], expected);
            }};
}

const CKernelEntry kEntries[] = {
    CKernelEntry({"ToRadiance UInt16->Flt32, order 1", 6, 0, 0, [](const SRun& run) { return Make(run, 1); }}),
    CKernelEntry({"ToRadiance UInt16->Flt32, order 2", 6, 0, 0, [](const SRun& run) { return Make(run, 2); }}),
};

}  // namespace

}  // namespace ovix::bench
