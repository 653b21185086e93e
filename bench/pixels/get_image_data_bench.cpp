#include "reduce/pixels/get_image_data.h"

#include "bench/support/data.h"

namespace ovix::bench {

namespace {

struct SData {
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<float>> out;
};

const CKernelEntry kEntry({
    .name = "GetImageData UInt16->Flt32",
    .bytesPerPixel = 6,
    .wanted = 0.95,
    .make =
        [](const SRun& run) {
            const auto data = std::make_shared<SData>(SceneLanes(run), Lanes<float>(run));
            const reduce::SArea whole{0, 0, static_cast<u16>(run.height - 1), static_cast<u16>(run.width - 1)};
            SJob job;
            job.run = [=](u32 lane) {
                reduce::GetImageData({data->in[lane].data(), UInt16}, nullptr, {data->out[lane].data(), Flt32}, nullptr,
                                     run.width, run.height, whole);
            };
            job.prove = [=] { return FirstDifference(data->out[0], data->in[0]); };
            return job;
        },
});

}  // namespace

}  // namespace ovix::bench
