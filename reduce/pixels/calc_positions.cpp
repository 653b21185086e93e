#include "reduce/pixels/calc_positions.h"

namespace ovix::reduce {

namespace {

constexpr u32 kPointCount = 6;

struct SPlace {
    u32 CStats::*index;
    SPoint CStats::*point;
};

constexpr SPlace kPlaces[kPointCount] = {
    {&CStats::minimumIndex, &CStats::minimumPosition},       {&CStats::maximumIndex, &CStats::maximumPosition},
    {&CStats::allMinimumIndex, &CStats::allMinimumPosition}, {&CStats::allMaximumIndex, &CStats::allMaximumPosition},
    {&CStats::firstIndex, &CStats::boundsTopLeft},           {&CStats::lastIndex, &CStats::boundsBottomRight},
};

/// `convert(indices, points)` turns the six indices into points; a point that it does not write stays.
template <class F>
void Convert(CStats& stats, const F& convert) {
    TArray<u32> indices(kPointCount);
    TArray<SPoint> points(kPointCount);
    for (u32 i = 0; i < kPointCount; ++i) {
        indices[i] = stats.*kPlaces[i].index;
        points[i] = stats.*kPlaces[i].point;
    }
    convert(indices, points);
    for (u32 i = 0; i < kPointCount; ++i) stats.*kPlaces[i].point = points[i];
}

}  // namespace

void CalcPositions(CStats& stats, SArea area) {
    Convert(stats, [&](const auto& indices, auto& points) { IndiciesToPoints(area, indices, points); });
}

void CalcPositions(CStats& stats, const TArray<SScanLine>& lines) {
    Convert(stats, [&](const auto& indices, auto& points) { IndiciesToPoints(lines, indices, points); });
}

void CalcPositions(CStats& stats, u16 width, u16 height) {
    Convert(stats, [&](const auto& indices, auto& points) { IndiciesToPoints(width, height, indices, points); });
}

void CalcPositions(CStats& stats, u16 width, u16 height, const u32* indices, u32 count) {
    Convert(stats, [&](auto& places, auto& points) {
        for (u32& place : places) place = place < count ? indices[place] : 0;
        IndiciesToPoints(width, height, places, points);
    });
}

void CalcPositions(CStats& stats, SArea area, const u8* mask, u32 maskStride) {
    u32 place = 0;
    for (u32 row = area.top; row <= area.bottom; ++row) {
        for (u32 column = area.left; column <= area.right; ++column) {
            if (!mask[std::size_t{row} * maskStride + column]) continue;
            for (const SPlace& each : kPlaces) {
                if (stats.*each.index == place) {
                    stats.*each.point = {static_cast<i32>(column), static_cast<i32>(row)};
                }
            }
            ++place;
        }
    }
}

}  // namespace ovix::reduce
