#include "core/typed_data.h"

#include "bench/support/data.h"
#include "bench/support/peers.h"

namespace ovix::bench {

namespace {

const CKernelEntry kEntry({
    .name = "ConvertArray UInt16->Flt32",
    .bytesPerPixel = 6,
    .wanted = 0.95,
    .make =
        [](const SRun& run) {
            struct SData {
                std::vector<std::vector<u16>> in;
                std::vector<std::vector<float>> out;
            };
            const auto data = std::make_shared<SData>(SceneLanes(run), Lanes<float>(run));
            return SJob{
                [=](u32 lane) {
                    ConvertArray({data->out[lane].data(), Flt32}, {data->in[lane].data(), UInt16}, run.Pixels());
                },
                [=] { return FirstDifference(data->out[0], data->in[0]); }};
        },
});

const CKernelEntry kToCounts({
    .name = "ConvertArray Flt32->UInt16",
    .bytesPerPixel = 6,
    .make =
        [](const SRun& run) {
            struct SData {
                std::vector<std::vector<float>> in;
                std::vector<std::vector<u16>> out;
            };
            const auto data = std::make_shared<SData>(SData{Lanes<float>(run), Lanes<u16>(run)});
            for (u32 lane = 0; lane < run.lanes; ++lane) {
                const std::vector<u16> counts = SceneCounts(run, lane);
                data->in[lane].assign(counts.begin(), counts.end());
            }
            return SJob{
                [=](u32 lane) {
                    ConvertArray({data->out[lane].data(), UInt16}, {data->in[lane].data(), Flt32}, run.Pixels());
                },
                [=] { return FirstDifference(data->out[0], data->in[0]); },
                {},
                ConvertPeers(data->in, data->out)};
        },
});

}  // namespace

}  // namespace ovix::bench
