#include "reduce/pixels/stats_route.h"

#include <cmath>
#include <cstring>
#include <initializer_list>

#include "core/visit.h"

namespace ovix::reduce {

namespace {

/// Pixels from first to last, both inclusive.
u32 Extent(i32 first, i32 last) { return static_cast<u32>(last) - static_cast<u32>(first) + 1; }

float Middle(i32 first, i32 last) { return static_cast<float>(i64{last} + first) * 0.5F; }

SPoint Corner(i64 x, i64 y) { return {static_cast<i32>(x), static_cast<i32>(y)}; }

u32 FrameIndex(SPoint point, u32 width) { return static_cast<u32>(point.y) * width + static_cast<u32>(point.x); }

void WriteExtremes(CStats& stats, const SStatsWalk& walk, bool allValues, const SPointOf& pointOf) {
    const SExtremes& valid = walk.tally.valid;
    if (valid.any) {
        stats.minimum = valid.minimum;
        stats.maximum = valid.maximum;
        stats.minimumIndex = valid.minimumIndex;
        stats.maximumIndex = valid.maximumIndex;
        stats.minimumPosition = pointOf(valid.minimumIndex);
        stats.maximumPosition = pointOf(valid.maximumIndex);
    }
    const SExtremes& all = walk.tally.All();
    if (!all.any) return;
    if (allValues) {
        stats.allMinimum = all.minimum;
        stats.allMaximum = all.maximum;
    }
    stats.allMinimumIndex = all.minimumIndex;
    stats.allMaximumIndex = all.maximumIndex;
    stats.allMinimumPosition = pointOf(all.minimumIndex);
    stats.allMaximumPosition = pointOf(all.maximumIndex);
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

/// The column or row that a coordinate of a centre names, kept in the frame.
std::size_t Clamp(float place, u32 size) {
    return static_cast<std::size_t>(std::clamp<i64>(static_cast<i64>(place), 0, size ? size - 1 : 0));
}

}  // namespace

void FinishMoments(CStats& stats) {
    if (stats.count != 0) stats.mean = stats.sum / stats.count;
    // In one pass: rounding may leave a variance slightly below 0, whose deviation is NaN.
    stats.variance = stats.count < 2 ? 0 : stats.variance / stats.count - stats.mean * stats.mean;
    stats.standardDeviation = std::sqrt(stats.variance);
}

void FinishBounds(CStats& stats) {
    const SPoint& first = stats.boundsTopLeft;
    const SPoint& last = stats.boundsBottomRight;
    stats.boundsWidth = stats.count ? Extent(first.x, last.x) : 0;
    stats.boundsHeight = stats.count ? Extent(first.y, last.y) : 0;
    stats.centerX = Middle(first.x, last.x);
    stats.centerY = Middle(first.y, last.y);
}

SPoint SPointOf::operator()(u32 index) const {
    const u32 frameIndex = indices ? indices[index] : index;
    return {static_cast<i32>(frameIndex % width), static_cast<i32>(frameIndex / width)};
}

void WriteStats(CStats& stats, const SStatsWalk& walk, EAllValues allValues, const SPointOf& pointOf) {
    const STally& tally = walk.tally;
    stats.sum = tally.sums.values;
    stats.variance = tally.sums.squares;
    stats.count = tally.count;
    stats.statusUnion = tally.statusUnion;
    stats.minimumStatus = tally.minimumStatus;
    stats.maximumStatus = tally.maximumStatus;
    WriteExtremes(stats, walk, walk.hasStatus || allValues == EAllValues::Copied, pointOf);
    if (walk.box.any) {
        stats.boundsTopLeft = Corner(walk.box.left, walk.box.top);
        stats.boundsBottomRight = Corner(walk.box.right, walk.box.bottom);
    }
    FinishMoments(stats);
    FinishBounds(stats);
    stats.firstIndex = FrameIndex(stats.boundsTopLeft, pointOf.width);
    stats.lastIndex = FrameIndex(stats.boundsBottomRight, pointOf.width);
}

SCenter::SCenter(float centerX, float centerY, u32 width, u32 height) {
    const std::size_t left = Clamp(std::floor(centerX), width), right = Clamp(std::ceil(centerX), width);
    const std::size_t top = Clamp(std::floor(centerY), height), bottom = Clamp(std::ceil(centerY), height);
    const auto at = [&](std::size_t column, std::size_t row) { return row * width + column; };
    const std::size_t places[] = {at(right, top), at(right, bottom), at(left, bottom), at(left, top)};
    std::copy_n(places, 4, corners);
    besideX = left != right;
    besideY = top != bottom;
}

void SCenter::Write(CStats& stats, STypedData elements, const u8* status) const {
    Visit(elements.type, [&]<class T>(TElement<T>) {
        const T* p = static_cast<const T*>(elements.data);
        if (besideX) {
            stats.centerValue = SumOf({p[0], p[1], p[2], p[3]}) * 0.25;
        } else if (besideY) {
            stats.centerValue = SumOf({p[2], p[3]}) * 0.5;
        } else {
            stats.centerValue = static_cast<double>(p[3]);
        }
    });
    if (status) stats.centerStatus = static_cast<u8>(status[0] | status[1] | status[2] | status[3]);
}

CFrameTally::CFrameTally(EDataType type, u32 width, u32 height, bool hasStatus)
    : type_(type),
      width_(width),
      walk_{{}, {}, hasStatus},
      center_(Middle(0, static_cast<i32>(width - 1)), Middle(0, static_cast<i32>(height - 1)), width, height) {
    if (width == 0 || height == 0) return;
    walk_.box.Widen(0, 0, i64{width} - 1);
    walk_.box.Widen(i64{height} - 1, 0, i64{width} - 1);
}

void CFrameTally::Add(const void* pixels, const u8* status, std::size_t count) {
    const std::size_t size = ElementSize(type_);
    u8* first = static_cast<u8*>(const_cast<void*>(pixels));
    for (u32 i = 0; i < 4; ++i) {
        const std::size_t place = center_.corners[i] - next_;
        if (center_.corners[i] < next_ || place >= count) continue;
        std::memcpy(elements_ + i * size, first + place * size, size);
        if (status) status_[i] = status[place];
    }
    constexpr std::size_t kMost = std::size_t{1} << 30;  // counts within a block have 32 bits
    for (std::size_t at = 0, n = 0; at < count; at += n) {
        n = std::min(kMost, count - at);
        AddPixels(walk_.tally, {first + at * size, type_}, status ? status + at : nullptr, nullptr, static_cast<u32>(n),
                  {.first = static_cast<u32>(next_ + at)});
    }
    next_ += count;
}

void CFrameTally::Finish(CStats& stats) const {
    WriteStats(stats, walk_, EAllValues::Copied, {width_});
    if (!walk_.box.any) return;
    u8 elements[sizeof elements_];
    std::memcpy(elements, elements_, sizeof elements);
    center_.Write(stats, {elements, type_}, walk_.hasStatus ? status_ : nullptr);
}

}  // namespace ovix::reduce
