#include "core/convert_array.h"

#include "bench/support/data.h"

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

}  // namespace

}  // namespace ovix::bench
