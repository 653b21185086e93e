#include "reduce/pixels/stats.h"

#include "reduce/pixels/parts.h"
#include "reduce/pixels/stats_route.h"

namespace ovix::reduce {

namespace {

template <class Lines>
SBox BoxOf(const Lines& selection) {
    SBox box;
    ForEachLine(selection, [&](const SScanLine& line) {
        if (CountPixels(line)) box.Widen(line.row, line.left, line.right);
    });
    return box;
}

/// That of the listed pixels of a frame.
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

// The functions that answer bool: the selection forms, with a status at the frame index.

SPlaces PlacesOf(const SSpan& run) { return {.first = static_cast<u32>(run.first)}; }
SPlaces PlacesOf(const SList& run) { return {.list = run.indices}; }

template <class Selection>
void AddSelection(STally& tally, STypedData data, const u8* status, const Selection& selection) {
    ForEachRun(selection, [&](const auto& run) {
        SElementScratch pixels;
        TScratch<u8> flags;
        AddPixels(tally, ViewOf(run, data, pixels), run.View(status, flags), nullptr, run.count, PlacesOf(run));
    });
}

/// Rows that are short are put together, as each call has its price.
void AddSelection(STally& tally, STypedData data, const u8* status, const SRectangle& rectangle) {
    const SArea& area = rectangle.area;
    const u32 length = CountPixels(SScanLine{area.top, area.left, area.right});
    const std::size_t size = ElementSize(data.type);
    const u32 rowsAtOnce = length ? kTallyBlock / length : 0;
    if (rowsAtOnce < 2 || CoversRows(rectangle)) return AddSelection<SRectangle>(tally, data, status, rectangle);
    alignas(64) u8 pixels[kTallyBlock * 8];
    u8 flags[kTallyBlock];
    for (u32 row = area.top, rows = 0; row <= area.bottom; row += rows) {
        rows = std::min<u32>(rowsAtOnce, area.bottom + 1U - row);
        const std::size_t first = std::size_t{row} * rectangle.width + area.left;
        for (u32 i = 0; i < rows; ++i) {
            const std::size_t from = first + std::size_t{i} * rectangle.width;
            std::memcpy(pixels + i * length * size, static_cast<const u8*>(data.data) + from * size, length * size);
            if (status) std::memcpy(flags + i * length, status + from, length);
        }
        AddPixels(tally, {pixels, data.type}, status ? flags : nullptr, nullptr, rows * length,
                  {.first = static_cast<u32>(first), .rowLength = length, .stride = rectangle.width});
    }
}

template <class Selection>
bool Walk(CStats& stats, STypedData data, const u8* status, u16 width, const Selection& selection, const SBox& box) {
    if (!IsNumeric(data.type)) return false;
    SStatsWalk walk{{}, box, status != nullptr};
    AddSelection(walk.tally, data, status, selection);
    stats.allMinimumIndex = stats.allMaximumIndex = ~u32{0};
    WriteStats(stats, walk, EAllValues::Kept, {width});
    return true;
}

// The functions without a result: a frame, whole or through a bottom-up mask, and a compact buffer.

bool IsTaken(EDataType type) { return IsNumeric(type) && type != UInt64; }

u32 Size(int size) { return static_cast<u32>(std::max(size, 0)); }

/// The mask of a frame, from its last row: this mask alone stands bottom-up beside a frame that is read from its top.
struct SBottomUpMask {
    const u8* mask;
    u32 stride;
    u32 width;
    u32 height;

    const u8* Row(u32 y) const { return mask + std::size_t{height - 1 - y} * stride; }

    /// The bytes of the frame's pixels from `first` on.
    void Gather(u64 first, u32 count, u8* bytes) const {
        for (u32 done = 0, n = 0; done < count; done += n) {
            const u32 x = static_cast<u32>((first + done) % width);
            n = std::min(count - done, width - x);
            std::memcpy(bytes + done, Row(static_cast<u32>((first + done) / width)) + x, n);
        }
    }

    SBox Box() const {
        SBox box;
        for (u32 y = 0; y < height; ++y) {
            const u8* row = Row(y);
            const auto isSet = [](u8 byte) { return byte != 0; };
            const u8* first = std::find_if(row, row + width, isSet);
            if (first == row + width) continue;
            const u8* end = row + width;
            while (!end[-1]) --end;
            box.Widen(y, first - row, end - row - 1);
        }
        return box;
    }
};

void MaskedStats(CStats& stats, STypedData data, const u8* status, const SBottomUpMask& mask) {
    SStatsWalk walk{{}, mask.Box(), status != nullptr};
    const u64 pixels = u64{mask.width} * mask.height;
    for (u64 at = 0; at < pixels; at += kTallyBlock) {
        const u32 count = static_cast<u32>(std::min<u64>(kTallyBlock, pixels - at));
        u8 selected[kTallyBlock];
        mask.Gather(at, count, selected);
        SElementScratch unused;
        AddPixels(walk.tally, ViewOf(SSpan{at, 0, count}, data, unused), status ? status + at : nullptr, selected,
                  count, {.first = static_cast<u32>(at)});
    }
    WriteStats(stats, walk, EAllValues::Copied, {mask.width});
    if (pixels == 0) return;
    const SCenter center(stats.centerX, stats.centerY, mask.width, mask.height);
    alignas(8) u8 elements[4 * 8];
    u8 flags[4];
    for (u32 i = 0; i < 4; ++i) {
        const std::size_t size = ElementSize(data.type);
        std::memcpy(elements + i * size, static_cast<const u8*>(data.data) + center.corners[i] * size, size);
        if (status) flags[i] = status[center.corners[i]];
    }
    center.Write(stats, {elements, data.type}, status ? flags : nullptr);
}

// The points beside the indices of a result.

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

bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height) {
    if (width == 0 || height == 0) return false;
    const SArea whole{0, 0, static_cast<u16>(height - 1), static_cast<u16>(width - 1)};
    return GetStats(stats, data, status, width, height, whole);
}

bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16, SArea area) {
    const SRectangle rectangle{width, area};
    return Walk(stats, data, status, width, rectangle, BoxOf(rectangle));
}

bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16, const TArray<SScanLine>& lines) {
    const SLines region{width, lines};
    return Walk(stats, data, status, width, region, BoxOf(region));
}

bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16, const u32* indices, u32 count) {
    return Walk(stats, data, status, width, SIndexList{indices, count}, BoxOf(indices, count, width));
}

bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height, SArea area, const u8*, u32) {
    return GetStats(stats, data, status, width, height, area);  // callers pass masks that were never applied
}

void GetStats(CStats& stats, STypedData data, int width, int height, u8* mask, u32 maskStride, u8* status) {
    if (!IsTaken(data.type)) return;
    if (mask) return MaskedStats(stats, data, status, {mask, maskStride, Size(width), Size(height)});
    CFrameTally frame(data.type, Size(width), Size(height), status != nullptr);
    frame.Add(data.data, status, std::size_t{Size(width)} * Size(height));
    frame.Finish(stats);
}

void GetStats(CStats& stats, STypedData data, u8* status, u32 count) {
    if (!IsTaken(data.type)) return;
    CFrameTally frame(data.type, count, 1, status != nullptr);
    frame.Add(data.data, status, count);
    frame.Finish(stats);
}

void GetStats(CStats& stats, STypedData data, u32* indices, u32 count, int width, int, u8* status) {
    if (!IsTaken(data.type)) return;
    SStatsWalk walk{{}, BoxOf(indices, count, Size(width)), status != nullptr};
    ForEachRun(SIndexList{indices, count}, [&](const SList& run) {
        // The pixels stand one behind the other, their status at the listed places; an index is a place in the list.
        const SSpan compact{run.out, run.out, run.count};
        SElementScratch unused;
        TScratch<u8> flags;
        AddPixels(walk.tally, ViewOf(compact, data, unused), run.View<u8>(status, flags), nullptr, run.count,
                  PlacesOf(compact));
    });
    WriteStats(stats, walk, EAllValues::Copied, {Size(width), indices});
}

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
