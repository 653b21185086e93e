#include "reduce/pixels/stats.h"

#include <algorithm>
#include <array>

#include "reduce/pixels/lut_kernel.h"
#include "reduce/pixels/parts.h"
#include "reduce/pixels/simd/stats_simd.h"
#include "reduce/pixels/stats_route.h"

namespace ovix::reduce {

void CStatsCalculator::Start() {
    stats_.sum = 0;
    stats_.variance = 0;
    stats_.count = 0;
    stats_.statusUnion = 0;
    stats_.minimumStatus = 0;
    stats_.maximumStatus = 0;
    stats_.allMinimumIndex = ~u32{0};
    stats_.allMaximumIndex = ~u32{0};
    index_ = 0;
}

void CStatsCalculator::AddData(double value, u8 status, int x, int y) {
    index_ = 0;
    AddToRecord(stats_, value, status, x, y);
    ++index_;
}

void CStatsCalculator::Finish() {
    FinishBounds(stats_);
    FinishMoments(stats_);
}

namespace {

/// A table of values and one of status bytes for each preset, and the limits of both.
struct STables {
    const float* const* luts;
    const u8* const* statusLuts;
    u16 lower;
    u16 upper;
};

/// A block of the image that is never written.
struct SConverted {
    alignas(64) float values[kLutBlock];
    alignas(64) u8 status[kLutBlock];
};

SPoint PointAt(std::size_t index, u32 width) {
    const u32 place = static_cast<u32>(index);
    return {static_cast<i32>(place % width), static_cast<i32>(place / width)};
}

void WidenBounds(CStats& stats, SPoint topLeft, SPoint bottomRight) {
    SPoint &first = stats.boundsTopLeft, &last = stats.boundsBottomRight;
    first = {std::min(first.x, topLeft.x), std::min(first.y, topLeft.y)};
    last = {std::max(last.x, bottomRight.x), std::max(last.y, bottomRight.y)};
}

/// A span that goes on in a second row touches both sides of the frame.
void WidenBounds(CStats& stats, const SSpan& run, u32 width) {
    const SPoint first = PointAt(run.first, width), last = PointAt(run.first + run.count - 1, width);
    const bool oneRow = first.y == last.y;
    WidenBounds(stats, {oneRow ? first.x : 0, first.y}, {oneRow ? last.x : static_cast<i32>(width - 1), last.y});
}
void WidenBounds(CStats& stats, const SList& run, u32 width) {
    for (u32 i = 0; i < run.count; ++i) {
        const SPoint point = PointAt(run.indices[i], width);
        WidenBounds(stats, point, point);
    }
}

template <class Run>
void AddPixel(CStats& stats, const SConverted& block, const Run& run, u32 i, u32 width) {
    const SPoint point = PointAt(run.IndexAt(i), width);
    AddToRecord(stats, block.values[i], block.status[i], point.x, point.y);
}

/// The pixels of a block that count, one behind the other.
struct SCounted {
    float room[kLutBlock + simd::kSlack];
    u8 chosen[kLutBlock];
    const float* values;
    u32 count;
    u8 statusUnion = 0;
    SPlaces places;  ///< in the block

    SCounted(const SConverted& block, u32 blockCount) : values(block.values), count(blockCount) {
        for (u32 i = 0; i < blockCount; ++i) statusUnion |= block.status[i];
        if (IsCounted(statusUnion)) return;
        statusUnion = 0;
        for (u32 i = 0; i < blockCount; ++i) {
            chosen[i] = IsCounted(block.status[i]);
            statusUnion = static_cast<u8>(statusUnion | (chosen[i] ? block.status[i] : 0));
        }
        count =
            simd::Collect(reinterpret_cast<const u32*>(block.values), chosen, blockCount, reinterpret_cast<u32*>(room));
        values = room;
        places.chosen = chosen;
    }
};

/// A block, as if each pixel had gone through `AddToRecord`: those that can be extremes do, in their order; the others
/// only widen the bounds, and add to the sums where they count.
template <class Run>
void Add(CStats& stats, const SConverted& block, const Run& run, u32 width) {
    // To a copy of the record, which stands apart from all other memory: its sums can stay in registers.
    CStats added = stats;
    const simd::SFloatRange all = simd::MeasureFloats(block.values, run.count);
    if (all.hasNaN) {
        for (u32 i = 0; i < run.count; ++i) AddPixel(added, block, run, i, width);
        stats = added;
        return;
    }
    const SCounted counted(block, run.count);
    const u32 least = simd::FindFloat(block.values, run.count, all.minimum);
    const u32 most = simd::FindFloat(block.values, run.count, all.maximum);
    std::array<u32, 5> places = {least, most, most, most, most};
    simd::SSums sums{stats.sum, stats.variance};
    if (counted.count) {
        const simd::SFloatRange range = simd::MeasureFloats(counted.values, counted.count);
        places[2] = counted.places.At(0);
        places[3] = counted.places.At(simd::FindFloat(counted.values, counted.count, range.minimum));
        places[4] = counted.places.At(simd::FindFloat(counted.values, counted.count, range.maximum));
        sums.Add(counted.values, counted.count, range);
    }
    std::sort(places.begin(), places.end());
    for (const u32 place : places) AddPixel(added, block, run, place, width);
    added.sum = sums.values;
    added.variance = sums.squares;
    added.count = stats.count + counted.count;
    added.statusUnion |= counted.statusUnion;
    WidenBounds(added, run, width);
    stats = added;
}

/// A single pair of tables is that of preset 0, for frames without a preset map.
template <class Selection>
bool Walk(STypedData data, const u8* presets, CStats& stats, u16 width, const Selection& selection,
          const STables& tables) {
    if (!IsNumeric(data.type)) return false;
    CStatsCalculator calculator(stats);
    calculator.Start();
    const u8* statusLut = presets || !tables.statusLuts ? nullptr : tables.statusLuts[0];
    CLutKernel single(data.type, Flt32, presets ? nullptr : tables.luts[0], statusLut, tables.lower, tables.upper);
    CPresetLuts perPreset(tables.luts, tables.statusLuts, tables.lower);
    const FLutIndexSpan findPlaces = LutIndexFunction(data.type);
    SConverted converted{};
    ForEachBlock<kLutBlock>(selection, [&](const auto& block) {
        SElementScratch gathered;
        TScratch<u8> gatheredPresets;
        const STypedData pixels = ViewOf(block, data, gathered);
        if (presets) {
            u16 room[kLutBlock];
            const u16* places = findPlaces(pixels.data, room, block.count, tables.lower, tables.upper);
            perPreset.Look(block.View(presets, gatheredPresets), places, converted.values, converted.status,
                           block.count);
        } else {
            single(pixels.data, converted.values, statusLut ? converted.status : nullptr, block.count);
        }
        Add(stats, converted, block, width);
    });
    calculator.Finish();
    return true;
}

}  // namespace

bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const float* lut, const u8* statusLut,
                 u16 lower, u16 upper) {
    return GetStatsLUT(data, nullptr, stats, width, height, &lut, &statusLut, lower, upper);
}

bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper) {
    return Walk(data, sourceStatus, stats, width, SWhole{u32{width} * height}, {luts, statusLuts, lower, upper});
}

bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const u32* indices, u32 count, const float* lut,
                 const u8* statusLut, u16 lower, u16 upper) {
    return GetStatsLUT(data, nullptr, stats, width, height, indices, count, &lut, &statusLut, lower, upper);
}

bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16, const u32* indices, u32 count,
                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper) {
    return Walk(data, sourceStatus, stats, width, SIndexList{indices, count}, {luts, statusLuts, lower, upper});
}

bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const float* lut,
                 const u8* statusLut, u16 lower, u16 upper) {
    return GetStatsLUT(data, nullptr, stats, width, height, area, &lut, &statusLut, lower, upper);
}

bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16, SArea area,
                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper) {
    return Walk(data, sourceStatus, stats, width, SRectangle{width, area}, {luts, statusLuts, lower, upper});
}

bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const TArray<SScanLine>& lines,
                 const float* lut, const u8* statusLut, u16 lower, u16 upper) {
    return GetStatsLUT(data, nullptr, stats, width, height, lines, &lut, &statusLut, lower, upper);
}

bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16, const TArray<SScanLine>& lines,
                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper) {
    return Walk(data, sourceStatus, stats, width, SLines{width, lines}, {luts, statusLuts, lower, upper});
}

bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const u8* mask, u32 maskStride,
                 const float* lut, const u8* statusLut, u16 lower, u16 upper) {
    return GetStatsLUT(data, nullptr, stats, width, height, area, mask, maskStride, &lut, &statusLut, lower, upper);
}

bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16, SArea area, const u8* mask,
                 u32 maskStride, const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper) {
    const SMasked masked{width, area, mask, maskStride};
    return Walk(data, sourceStatus, stats, width, masked, {luts, statusLuts, lower, upper});
}

}  // namespace ovix::reduce
