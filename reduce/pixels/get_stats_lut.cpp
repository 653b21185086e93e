#include "reduce/pixels/stats.h"

#include "reduce/pixels/lut_kernel.h"
#include "reduce/pixels/parts.h"
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
    float values[kRunBlock];
    u8 status[kRunBlock];

    void Load(STypedData pixels, const u8* presets, u32 count, const STables& tables) {
        u16 room[kRunBlock];
        const u16* places = LutIndexFunction(pixels.type)(pixels.data, room, count, tables.lower, tables.upper);
        for (u32 i = 0; i < count; ++i) {
            const u8 preset = presets ? presets[i] : u8{0};
            const u8* statusLut = tables.statusLuts ? tables.statusLuts[preset] : nullptr;
            values[i] = tables.luts[preset][places[i]];
            status[i] = statusLut ? statusLut[places[i]] : u8{0};
        }
    }
};

/// Adds a block to a copy of the record, which stands apart from all other memory: its sums can stay in registers.
void Add(CStats& stats, const SConverted& converted, const SSpan& run, u32 width) {
    CStats local = stats;
    int x = static_cast<int>(run.first % width);
    int y = static_cast<int>(run.first / width);
    for (u32 i = 0; i < run.count; ++i) {
        AddToRecord(local, converted.values[i], converted.status[i], x, y);
        if (++x == static_cast<int>(width)) x = 0, ++y;
    }
    stats = local;
}

void Add(CStats& stats, const SConverted& converted, const SList& run, u32 width) {
    CStats local = stats;
    for (u32 i = 0; i < run.count; ++i) {
        const u32 index = run.indices[i];
        AddToRecord(local, converted.values[i], converted.status[i], static_cast<int>(index % width),
                    static_cast<int>(index / width));
    }
    stats = local;
}

/// The single-table shape is the per-preset one with one table and no preset map.
template <class Selection>
bool Walk(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, const Selection& selection,
          const STables& tables) {
    if (!IsNumeric(data.type)) return false;
    CStatsCalculator calculator(stats);
    calculator.Start();
    ForEachBlock(selection, [&](const auto& block) {
        SElementScratch gathered;
        TScratch<u8> gatheredPresets;
        SConverted converted;
        converted.Load(ViewOf(block, data, gathered), block.View(sourceStatus, gatheredPresets), block.count, tables);
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
