#include "apps/ovix/pipeline/region_stats.h"

#include <cmath>
#include <vector>

#include "apps/ovix/output/frame_writer.h"
#include "reduce/reduce.h"

namespace ovix::app {

SRegionStats StatsOf(const SMeasuredFrame& frame, const SRegion& region, u16 width, u16 height) {
    SRegionStats result{.frame = frame.number, .region = region};
    const STypedData values{const_cast<float*>(frame.values.data()), Flt32};
    reduce::GetStats(result.figures, values, frame.status.data(), width, height, region.Area());
    // The variance is made in one pass: equal values may give one a hair below 0, whose root is no number.
    if (result.figures.variance < 0) result.figures.variance = result.figures.standardDeviation = 0;

    std::vector<u8> status;
    for (u32 y = region.y; y < u32{region.y} + region.height; ++y) {
        const auto row = frame.status.subspan(std::size_t{y} * width + region.x, region.width);
        status.insert(status.end(), row.begin(), row.end());
    }
    result.status = CountStatus(status);
    return result;
}

}  // namespace ovix::app
