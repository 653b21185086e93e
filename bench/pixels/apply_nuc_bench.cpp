#include "reduce/pixels/apply_nuc.h"

#include <algorithm>

#include "bench/support/data.h"
#include "bench/support/peers.h"

namespace ovix::bench {

namespace {

constexpr double kLow = 0, kHigh = 16383;

template <class D>
struct SData {
    std::vector<std::vector<u16>> in;
    std::vector<std::vector<D>> out;
    STables tables;

    explicit SData(const SRun& run) : in(SceneLanes(run)), out(Lanes<D>(run)), tables(run) {}
};

template <class D>
SJob Make(const SRun& run, EDataType type) {
    const auto data = std::make_shared<SData<D>>(run);
    SJob job;
    job.run = [=](u32 lane) {
        reduce::ApplyNUC({data->out[lane].data(), type}, {data->in[lane].data(), UInt16}, run.Pixels(),
                         data->tables.gain.data(), data->tables.offset.data(), data->tables.replace.data(), 1, kLow,
                         kHigh);
    };
    job.prove = [=] {
        std::vector<D> expected;
        for (u32 i = 0; i < run.Pixels(); ++i) {
            const u32 j = data->tables.replace[i];
            const float product = static_cast<float>(data->in[0][j]) * data->tables.gain[j];
            const D value = static_cast<D>(product + static_cast<float>(data->tables.offset[j]));
            expected.push_back(std::clamp(value, static_cast<D>(kLow), static_cast<D>(kHigh)));
        }
        return FirstDifference(data->out[0], expected);
    };
    if constexpr (std::is_same_v<D, float>) {
        job.peers = NucPeers(data->in, data->out, data->tables);
    }
    return job;
}

const CKernelEntry kCounts({
    .name = "ApplyNUC UInt16->UInt16, all, clip",
    .bytesPerPixel = 14,
    .wanted = 0.77,
    .streamedBytesPerPixel = 4,
    .make = [](const SRun& run) { return Make<u16>(run, UInt16); },
});

const CKernelEntry kFloats({
    .name = "ApplyNUC UInt16->Flt32, all, clip",
    .bytesPerPixel = 16,
    .wanted = 0.92,
    .streamedBytesPerPixel = 6,
    .make = [](const SRun& run) { return Make<float>(run, Flt32); },
});

}  // namespace

}  // namespace ovix::bench
