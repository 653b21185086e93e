#include "reduce/pixels/stats_route.h"

#include "reduce/pixels/stats.h"
#include "reduce/pixels/stats_finish.h"

namespace ovix::reduce {

namespace {

SPoint Corner(i64 x, i64 y) { return {static_cast<i32>(x), static_cast<i32>(y)}; }

u32 FrameIndex(SPoint point, u32 width) { return static_cast<u32>(point.y) * width + static_cast<u32>(point.x); }

}  // namespace

SBox BoxOf(const u32* indices, u32 count, u32 width) {
    SBox box;
    u32 row = 0;
    u32 rowStart = 0;
    for (u32 i = 0; i < count; ++i) {
        if (indices[i] - rowStart >= width) {  // most neighbours in a list lie in one row: a division for each row
            row = indices[i] / width;
            rowStart = row * width;
        }
        box.Widen(row, indices[i] - rowStart, indices[i] - rowStart);
    }
    return box;
}

SPoint SPointOf::operator()(u32 index) const {
    const u32 frameIndex = indices ? indices[index] : index;
    return {static_cast<i32>(frameIndex % width), static_cast<i32>(frameIndex / width)};
}

void WriteStats(CStats& stats, const SWalk& walk, EAllValues allValues, const SPointOf& pointOf) {
    const STally& tally = walk.tally;
    stats.sum = tally.sum;
    stats.variance = tally.squares;
    stats.count = tally.count;
    stats.statusUnion = tally.statusUnion;
    stats.minimumStatus = tally.minimumStatus;
    stats.maximumStatus = tally.maximumStatus;
    if (tally.valid.any) {
        stats.minimum = tally.valid.minimum;
        stats.maximum = tally.valid.maximum;
        stats.minimumIndex = tally.valid.minimumIndex;
        stats.maximumIndex = tally.valid.maximumIndex;
        stats.minimumPosition = pointOf(tally.valid.minimumIndex);
        stats.maximumPosition = pointOf(tally.valid.maximumIndex);
    }
    const SExtremes& all = tally.All();
    if (all.any) {
        if (walk.hasStatus || allValues == EAllValues::Copied) {
            stats.allMinimum = all.minimum;
            stats.allMaximum = all.maximum;
        }
        stats.allMinimumIndex = all.minimumIndex;
        stats.allMaximumIndex = all.maximumIndex;
        stats.allMinimumPosition = pointOf(all.minimumIndex);
        stats.allMaximumPosition = pointOf(all.maximumIndex);
    }
    if (walk.box.any) {
        stats.boundsTopLeft = Corner(walk.box.left, walk.box.top);
        stats.boundsBottomRight = Corner(walk.box.right, walk.box.bottom);
    }
    FinishMoments(stats);
    FinishBounds(stats);
    stats.firstIndex = FrameIndex(stats.boundsTopLeft, pointOf.width);
    stats.lastIndex = FrameIndex(stats.boundsBottomRight, pointOf.width);
}

}  // namespace ovix::reduce
