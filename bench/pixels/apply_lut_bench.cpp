#include "reduce/pixels/apply_lut.h"

#include "bench/support/data.h"
#include "bench/support/peers.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

/// A table as a converter builds it: a smooth curve, and status flags at both ends of the range.
struct SLut {
    std::vector<float> values;
    std::vector<u8> status;

    SLut() {
        for (u32 k = 0; k < 65536; ++k) {
            values.push_back(std::sqrt(static_cast<float>(k)) * 0.7f - 20.0f);
            status.push_back(k < 500 ? 2 : k > 12000 ? 4 : 0);
        }
    }
};

template <class S>
struct SData {
    std::vector<std::vector<S>> in;
    std::vector<std::vector<float>> out;
    std::vector<std::vector<u8>> status;
    SLut lut;

    explicit SData(const SRun& run) : out(Lanes<float>(run)), status(Lanes<u8>(run)) {
        for (u32 lane = 0; lane < run.lanes; ++lane) {
            const std::vector<u16> counts = SceneCounts(run, lane);
            in.emplace_back(counts.begin(), counts.end());
        }
    }
};

template <class S>
SJob Make(const SRun& run, EDataType type, bool withStatus) {
    const auto data = std::make_shared<SData<S>>(run);
    SJob job;
    job.run = [=](u32 lane) {
        ApplyLUT({data->in[lane].data(), type}, {data->out[lane].data(), Flt32},
                 withStatus ? data->status[lane].data() : nullptr, run.Pixels(), data->lut.values.data(),
                 data->lut.status.data(), 0, 65535);
    };
    job.prove = [=] {
        std::vector<float> values;
        std::vector<u8> status;
        for (const S x : data->in[0]) {
            values.push_back(data->lut.values[static_cast<std::size_t>(x)]);
            status.push_back(withStatus ? data->lut.status[static_cast<std::size_t>(x)] : u8{0});
        }
        const std::string difference = FirstDifference(data->out[0], values);
        return difference.empty() ? FirstDifference(data->status[0], status) : difference;
    };
    if constexpr (std::is_same_v<S, u16>) {
        if (!withStatus) job.peers = LutPeers(data->in, data->out, data->lut.values);
    }
    return job;
}

const CKernelEntry kCounts({
    .name = "ApplyLUT UInt16->Flt32",
    .bytesPerPixel = 6,
    .wanted = 0.33,
    .make = [](const SRun& run) { return Make<u16>(run, UInt16, false); },
});

const CKernelEntry kCountsStatus({
    .name = "ApplyLUT UInt16->Flt32, status",
    .bytesPerPixel = 7,
    .wanted = 0.28,
    .make = [](const SRun& run) { return Make<u16>(run, UInt16, true); },
});

const CKernelEntry kFloats({
    .name = "ApplyLUT Flt32->Flt32",
    .bytesPerPixel = 8,
    .wanted = 0.31,
    .make = [](const SRun& run) { return Make<float>(run, Flt32, false); },
});

}  // namespace

}  // namespace ovix::bench
