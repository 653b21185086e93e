#include "reduce/pixels/get_stats.h"

#include "reduce/pixels/parts.h"
#include "reduce/pixels/stats_route.h"

/// The functions that answer bool: the selection forms, with a status at the frame index.
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

SPlaces PlacesOf(const SSpan& run) { return {static_cast<u32>(run.first)}; }
SPlaces PlacesOf(const SList& run) { return {0, run.indices}; }

template <class Selection>
bool Walk(CStats& stats, STypedData data, const u8* status, u16 width, const Selection& selection, const SBox& box) {
    if (!IsNumeric(data.type)) return false;
    SWalk walk{{}, box, status != nullptr};
    ForEachRun(selection, [&](const auto& run) {
        SElementScratch pixels;
        TScratch<u8> flags;
        AddPixels(walk.tally, ViewOf(run, data, pixels), run.View(status, flags), run.count, PlacesOf(run));
    });
    stats.allMinimumIndex = stats.allMaximumIndex = ~u32{0};
    WriteStats(stats, walk, EAllValues::Kept, {width});
    return true;
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
    return GetStats(stats, data, status, width, height, area);  // the mask does not count, on purpose
}

}  // namespace ovix::reduce
