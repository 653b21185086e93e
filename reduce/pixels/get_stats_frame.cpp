#include <cmath>
#include <initializer_list>

#include "reduce/pixels/get_stats.h"
#include "reduce/pixels/parts.h"
#include "reduce/pixels/stats_route.h"

/// The functions without a result: a frame, whole or through a bottom-up mask, and a compact buffer.
namespace ovix::reduce {

namespace {

struct SFrame {
    STypedData data;
    const u8* status;
    u32 width;
    u32 height;

    u64 Size() const { return u64{width} * height; }
};

bool IsTaken(EDataType type) { return IsNumeric(type) && type != UInt64; }

void AddRun(SWalk& walk, const SFrame& frame, const SSpan& run) {
    SElementScratch unusedPixels;
    TScratch<u8> unusedFlags;
    AddPixels(walk.tally, ViewOf(run, frame.data, unusedPixels), run.View(frame.status, unusedFlags), run.count,
              {static_cast<u32>(run.first)});
}

void WalkFrame(SWalk& walk, const SFrame& frame) {
    const u64 size = frame.Size();
    if (size == 0) return;
    constexpr u64 kMost = u64{1} << 31;
    for (u64 at = 0; at < size; at += kMost) {
        AddRun(walk, frame, {at, at, static_cast<u32>(std::min(kMost, size - at))});
    }
    walk.box.Widen(0, 0, i64{frame.width} - 1);
    walk.box.Widen(i64{frame.height} - 1, 0, i64{frame.width} - 1);
}

/// The frame from its top row, the mask from its last row: this mask alone stands bottom-up.
void WalkMask(SWalk& walk, const SFrame& frame, const u8* mask, u32 maskStride) {
    for (u32 y = 0; y < frame.height; ++y) {
        const u8* row = mask + std::size_t{frame.height - 1 - y} * maskStride;
        const std::size_t first = std::size_t{y} * frame.width;
        for (u32 x = 0; x < frame.width;) {
            if (!row[x]) {
                ++x;
                continue;
            }
            u32 end = x + 1;
            while (end < frame.width && row[end]) ++end;
            AddRun(walk, frame, {first + x, 0, end - x});
            walk.box.Widen(y, x, i64{end} - 1);
            x = end;
        }
    }
}

/// The sum of a few pixels. Integers are summed in 32 bits that wrap: unsigned for `UInt32`, signed for all others.
template <class T>
double SumOf(std::initializer_list<T> pixels) {
    if constexpr (std::is_floating_point_v<T>) {
        double sum = 0;
        for (const T pixel : pixels) sum += pixel;
        return sum;
    } else {
        u32 sum = 0;
        for (const T pixel : pixels) sum += static_cast<u32>(pixel);
        if constexpr (std::is_same_v<T, u32>) return sum;
        return static_cast<i32>(sum);
    }
}

/// The columns or rows beside a centre, the same twice when it falls on one.
struct SBeside {
    std::size_t low;
    std::size_t high;

    SBeside(float center, u32 size) : low(Clamp(std::floor(center), size)), high(Clamp(std::ceil(center), size)) {}

  private:
    static std::size_t Clamp(float place, u32 size) {
        return static_cast<std::size_t>(std::clamp<i64>(static_cast<i64>(place), 0, i64{size} - 1));
    }
};

void WriteCenter(CStats& stats, const SFrame& frame) {
    const SBeside x(stats.centerX, frame.width);
    const SBeside y(stats.centerY, frame.height);
    const auto at = [&](std::size_t column, std::size_t row) { return row * frame.width + column; };
    const std::size_t corners[] = {at(x.high, y.low), at(x.high, y.high), at(x.low, y.high), at(x.low, y.low)};
    Visit(frame.data.type, [&]<class T>(TElement<T>) {
        const T* p = static_cast<const T*>(frame.data.data);
        if (x.low != x.high) {
            stats.centerValue = SumOf({p[corners[0]], p[corners[1]], p[corners[2]], p[corners[3]]}) * 0.25;
        } else if (y.low != y.high) {
            stats.centerValue = SumOf({p[corners[2]], p[corners[3]]}) * 0.5;
        } else {
            stats.centerValue = static_cast<double>(p[corners[3]]);
        }
    });
    if (!frame.status) return;
    stats.centerStatus = 0;
    for (const std::size_t corner : corners) stats.centerStatus |= frame.status[corner];
}

void FrameStats(CStats& stats, const SFrame& frame, const u8* mask, u32 maskStride) {
    if (!IsTaken(frame.data.type)) return;
    SWalk walk{{}, {}, frame.status != nullptr};
    if (mask) {
        WalkMask(walk, frame, mask, maskStride);
    } else {
        WalkFrame(walk, frame);
    }
    WriteStats(stats, walk, EAllValues::Copied, {frame.width});
    if (frame.Size() != 0) WriteCenter(stats, frame);
}

u32 Size(int size) { return static_cast<u32>(std::max(size, 0)); }

}  // namespace

void GetStats(CStats& stats, STypedData data, int width, int height, u8* mask, u32 maskStride, u8* status) {
    FrameStats(stats, {data, status, Size(width), Size(height)}, mask, maskStride);
}

void GetStats(CStats& stats, STypedData data, u8* status, u32 count) {
    FrameStats(stats, {data, status, count, 1}, nullptr, 0);
}

void GetStats(CStats& stats, STypedData data, u32* indices, u32 count, int width, int, u8* status) {
    if (!IsTaken(data.type)) return;
    SWalk walk{{}, BoxOf(indices, count, Size(width)), status != nullptr};
    ForEachRun(SIndexList{indices, count}, [&](const SList& run) {
        // The pixels stand one behind the other, their status at the listed places; an index is a place in the list.
        const SSpan compact{run.out, run.out, run.count};
        SElementScratch unused;
        TScratch<u8> flags;
        AddPixels(walk.tally, ViewOf(compact, data, unused), run.View<u8>(status, flags), run.count,
                  {static_cast<u32>(run.out)});
    });
    WriteStats(stats, walk, EAllValues::Copied, {Size(width), indices});
}

}  // namespace ovix::reduce
