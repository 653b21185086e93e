#include "reduce/pixels/stats.h"

#include "bench/support/data.h"
#include "bench/support/peers.h"
#include "core/visit.h"

namespace ovix::bench {

namespace {

using namespace ovix::reduce;

template <class T>
struct SData {
    std::vector<std::vector<T>> in;
    std::vector<u8> status;
    std::vector<u8> mask;
    CStats stats;

    explicit SData(const SRun& run) : status(run.Pixels()), mask(run.Pixels()) {
        for (u32 i = 0; i < run.Pixels(); ++i) mask[i] = i % 7 < 5 || i % run.width < 100;
        for (u32 lane = 0; lane < run.lanes; ++lane) {
            const std::vector<u16> counts = SceneCounts(run, lane);
            in.emplace_back(counts.begin(), counts.end());
        }
        if constexpr (std::is_same_v<T, float>) {
            for (std::vector<float>& frame : in) {
                for (float& pixel : frame) pixel = std::sqrt(pixel);
            }
        }
    }
};

/// The middle of a frame, three quarters of its width and height.
SArea Middle(const SRun& run) {
    const auto at = [](u16 size, int eighths) { return static_cast<u16>(size * eighths / 8); };
    return {at(run.height, 1), at(run.width, 1), at(run.height, 7), at(run.width, 7)};
}

/// The figures of an area, one pixel after the other.
template <class T>
std::vector<double> Walk(const std::vector<T>& frame, const SRun& run, SArea area) {
    double sum = 0, squares = 0, minimum = frame[u32{area.top} * run.width + area.left], maximum = minimum;
    u32 minimumIndex = u32{area.top} * run.width + area.left, maximumIndex = minimumIndex;
    for (u32 y = area.top; y <= area.bottom; ++y) {
        for (u32 x = area.left; x <= area.right; ++x) {
            const u32 i = y * run.width + x;
            const double v = frame[i];
            sum += v;
            squares += v * v;
            if (v < minimum) minimum = v, minimumIndex = i;
            if (v > maximum) maximum = v, maximumIndex = i;
        }
    }
    const double count = (area.bottom - area.top + 1.0) * (area.right - area.left + 1.0), mean = sum / count;
    return {sum, squares / count - mean * mean, minimum, maximum, 1.0 * minimumIndex, 1.0 * maximumIndex};
}

/// `walk` fills the record from a frame; the pixels that it visits are those of `area`.
template <class T, class F>
SJob Make(const SRun& run, SArea area, const F& walk, bool withPeers = false) {
    const auto data = std::make_shared<SData<T>>(run);
    return {[=](u32 lane) {
                walk(*data, STypedData{data->in[lane].data(), DataTypeOf<T>()});
            },
            [=] {
                const CStats& s = data->stats;
                return FirstDifference(std::vector<double>{s.sum, s.variance, s.minimum, s.maximum,
                                                           1.0 * s.minimumIndex, 1.0 * s.maximumIndex},
                                       Walk(data->in[0], run, area));
            },
            {},
            withPeers ? StatsPeers(data->in) : std::vector<SPeer>()};
}

/// Through a mask of the frame's size; the record's own extremes are those of the masked pixels.
template <class T>
SJob Masked(const SRun& run) {
    const auto data = std::make_shared<SData<T>>(run);
    SJob job;
    job.run = [=](u32 lane) {
        GetStats(data->stats, {data->in[lane].data(), DataTypeOf<T>()}, run.width, run.height, data->mask.data(),
                 run.width, nullptr);
    };
    job.prove = [=] {
        double sum = 0, squares = 0, count = 0;
        for (u32 i = 0; i < run.Pixels(); ++i) {
            const u32 bottomUp = (run.height - 1 - i / run.width) * run.width + i % run.width;
            if (!data->mask[bottomUp]) continue;
            const double v = data->in[0][i];
            sum += v;
            squares += v * v;
            ++count;
        }
        const double mean = sum / count;
        const CStats& s = data->stats;
        return FirstDifference(std::vector<double>{s.sum, s.variance, 1.0 * s.count},
                               std::vector<double>{sum, squares / count - mean * mean, count});
    };
    job.peers = MaskPeers(data->in, data->mask);
    return job;
}

template <class T>
SJob Whole(const SRun& run, bool withStatus) {
    const SArea whole{0, 0, static_cast<u16>(run.height - 1), static_cast<u16>(run.width - 1)};
    const auto walk = [=](SData<T>& data, STypedData frame) {
        GetStats(data.stats, frame, run.width, run.height, nullptr, 0, withStatus ? data.status.data() : nullptr);
    };
    return Make<T>(run, whole, walk, !withStatus);
}

template <class T>
SJob Area(const SRun& run) {
    const SArea middle = Middle(run);
    return Make<T>(run, middle, [=](SData<T>& data, STypedData frame) {
        GetStats(data.stats, frame, nullptr, run.width, run.height, middle);
    });
}

// The copy beside these reads the bytes that the statistics read, and writes as many. Of the area, nine pixels in
// sixteen are visited. The ordered sums of floating pixels take the time of one addition for each.
const CKernelEntry kEntries[] = {
    CKernelEntry({"GetStats UInt16", 4, 0.21, 2, [](const SRun& run) { return Whole<u16>(run, false); }}),
    CKernelEntry({"GetStats UInt16, status", 6, 0, 2, [](const SRun& run) { return Whole<u16>(run, true); }}),
    CKernelEntry({"GetStats UInt16, area", 4 * 9 / 16.0, 0, 2, [](const SRun& run) { return Area<u16>(run); }}),
    CKernelEntry({"GetStats UInt16, mask", 6, 0, 2, Masked<u16>}),
    CKernelEntry({"GetStats Flt32, mask", 10, 0, 4, Masked<float>}),
    CKernelEntry({"GetStats Flt32", 8, 0, 4, [](const SRun& run) { return Whole<float>(run, false); }}),
    CKernelEntry({"GetStats Flt32, status", 10, 0, 4, [](const SRun& run) { return Whole<float>(run, true); }}),
    CKernelEntry({"GetStats Flt32, area", 8 * 9 / 16.0, 0, 4, [](const SRun& run) { return Area<float>(run); }}),
};

}  // namespace

}  // namespace ovix::bench
