#include "reduce/pixels/stats.h"

#include "bench/support/data.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

struct SData {
    std::vector<std::vector<u16>> in;
    std::vector<float> lut = std::vector<float>(65536);
    std::vector<u8> statusLut = std::vector<u8>(65536);
    CStats stats;

    explicit SData(const SRun& run) : in(SceneLanes(run)) {
        for (u32 k = 0; k < 65536; ++k) lut[k] = std::sqrt(static_cast<float>(k)) * 0.7f - 20.0f;
    }
};

// Beside a copy of the counts. The sums are ordered, as those of floating pixels.
const CKernelEntry kEntry({
    .name = "GetStatsLUT UInt16",
    .bytesPerPixel = 4,
    .streamedBytesPerPixel = 2,
    .make =
        [](const SRun& run) {
            const auto data = std::make_shared<SData>(run);
            return SJob{[=](u32 lane) {
                            GetStatsLUT({data->in[lane].data(), UInt16}, data->stats, run.width, run.height,
                                        data->lut.data(), data->statusLut.data(), 0, 65535);
                        },
                        [=] {
                            double sum = 0;
                            for (const u16 count : data->in[0]) sum += data->lut[count];
                            return FirstDifference(std::vector{data->stats.sum}, std::vector{sum});
                        }};
        },
});

}  // namespace

}  // namespace ovix::bench
