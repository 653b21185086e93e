#include "reduce/pixels/get_stats_lut.h"

#include "reduce/pixels/lut_index.h"
#include "reduce/pixels/parts.h"
#include "reduce/pixels/stats_calculator.h"

namespace ovix::reduce {

namespace {

/// A table of values and one of status bytes for each preset, and the limits of both.
struct STables {
    const float* const* luts;
    const u8* const* statusLuts;
    u16 lower;
    u16 upper;
};

void IndicesOf(STypedData pixels, u32 count, const STables& tables, u16* entries) {
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* from = static_cast<const T*>(pixels.data);
        const float lower = tables.lower;
        const float upper = tables.upper;
        for (u32 i = 0; i < count; ++i) entries[i] = LutIndex(static_cast<float>(from[i]), lower, upper);
    });
}

/// Steps through the frame positions of a run.
struct SPosition {
    u32 width;

    void AddTo(CStatsCalculator& calculator, const SSpan& run, const auto& pixel) const {
        u32 x = static_cast<u32>(run.first % width);
        u32 y = static_cast<u32>(run.first / width);
        for (u32 i = 0; i < run.count; ++i) {
            const auto [value, status] = pixel(i);
            calculator.AddData(value, status, static_cast<int>(x), static_cast<int>(y));
            if (++x == width) x = 0, ++y;
        }
    }
    void AddTo(CStatsCalculator& calculator, const SList& run, const auto& pixel) const {
        for (u32 i = 0; i < run.count; ++i) {
            const u32 index = run.indices[i];
            const auto [value, status] = pixel(i);
            calculator.AddData(value, status, static_cast<int>(index % width), static_cast<int>(index / width));
        }
    }
};

/// The single-table shape is the per-preset one with one table and no preset map.
template <class Selection>
bool Walk(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, const Selection& selection,
          const STables& tables) {
    if (!IsNumeric(data.type)) return false;
    CStats running = stats;  // a copy that the compiler can hold in registers
    CStatsCalculator calculator(running);
    calculator.Start();
    ForEachPart(selection, sourceStatus, [&](const auto& part, u8 preset) {
        TScratch<u64> gathered;
        u16 entries[kRunBlock];
        IndicesOf(ViewOf(part, data, gathered), part.count, tables, entries);
        const float* lut = tables.luts[preset];
        const u8* statusLut = tables.statusLuts ? tables.statusLuts[preset] : nullptr;
        struct SPixel {
            double value;
            u8 status;
        };
        SPosition{width}.AddTo(calculator, part, [&](u32 i) {
            const u16 k = entries[i];
            return SPixel{lut[k], statusLut ? statusLut[k] : u8{0}};
        });
    });
    calculator.Finish();
    stats = running;
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
