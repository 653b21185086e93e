#include "reduce/pixels/abate.h"

#include <algorithm>

#include "bench/support/data.h"

namespace ovix::bench {

namespace {

constexpr u8 kOrder[8] = {0, 1, 2, 3, 4, 5, 6, 7};
constexpr bool kValid[8] = {true, true};
constexpr u16 kLow[8] = {1000, 1000}, kHigh[8] = {7000, 15000};
constexpr float kMinimum = 0, kMaximum = 16383;

/// Two presets of one scene: the second sees half of the signal of the first.
struct SData {
    std::vector<std::vector<u16>> longer, shorter, out;
    std::vector<std::vector<u8>> status;
    STables tables;

    explicit SData(const SRun& run)
        : longer(SceneLanes(run)), shorter(longer), out(Lanes<u16>(run)), status(Lanes<u8>(run)), tables(run) {
        for (std::vector<u16>& frame : shorter) {
            for (u16& count : frame) count /= 2;
        }
    }
};

u16 Corrected(const SData& data, const std::vector<u16>& frame, u32 i, bool correct) {
    if (!correct) return frame[i];
    const u32 j = data.tables.replace[i];
    const float product = static_cast<float>(frame[j]) * data.tables.gain[j];
    const float value = std::clamp(product + static_cast<float>(data.tables.offset[j]), kMinimum, kMaximum);
    return static_cast<u16>(std::lround(value));
}

SJob Make(const SRun& run, bool correct) {
    const auto data = std::make_shared<SData>(run);
    SJob job;
    job.run = [=](u32 lane) {
        void* const sources[8] = {data->longer[lane].data(), data->shorter[lane].data()};
        const auto both = [&](auto& table) { return correct ? table.data() : nullptr; };
        float* const gains[8] = {both(data->tables.gain), both(data->tables.gain)};
        i16* const offsets[8] = {both(data->tables.offset), both(data->tables.offset)};
        u32* const replaces[8] = {both(data->tables.replace), both(data->tables.replace)};
        reduce::Abate(UInt16, sources, run.Pixels(), data->out[lane].data(), data->status[lane].data(), kValid, kOrder,
                      kLow, kHigh, reduce::AbateFromFirst, gains, offsets, replaces, correct, kMinimum, kMaximum);
    };
    job.prove = [=] {
        std::vector<u16> values;
        std::vector<u8> status;
        for (u32 i = 0; i < run.Pixels(); ++i) {
            const u16 first = Corrected(*data, data->longer[0], i, correct);
            status.push_back(first > kHigh[0]);
            values.push_back(status.back() ? Corrected(*data, data->shorter[0], i, correct) : first);
        }
        const std::string difference = FirstDifference(data->out[0], values);
        return difference.empty() ? FirstDifference(data->status[0], status) : difference;
    };
    return job;
}

const CKernelEntry kMerge({
    .name = "Abate 2 x UInt16",
    .bytesPerPixel = 7,
    .wanted = 0.64,
    .make = [](const SRun& run) { return Make(run, false); },
});

const CKernelEntry kMergeCorrected({
    .name = "Abate 2 x UInt16, all, clip",
    .bytesPerPixel = 17,
    .streamedBytesPerPixel = 7,
    .make = [](const SRun& run) { return Make(run, true); },
});

}  // namespace

}  // namespace ovix::bench
