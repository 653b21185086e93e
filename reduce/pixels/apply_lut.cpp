#include "reduce/pixels/apply_lut.h"

#include <optional>

#include "core/convert_array.h"
#include "core/visit.h"
#include "reduce/pixels/lut_index.h"
#include "reduce/pixels/preset_map.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

namespace {

/// Pixels that go through the steps of this kernel together.
constexpr u32 kBlock = 2048;

/// A table of status bytes. It holds few, long runs of one value: a pixel's entry is found sooner among these than in
/// the table. What was found out of the table is kept, and grows with the places that blocks ask for.
class CStatusTable {
  public:
    CStatusTable(const u8* entries, u16 lower) : entries_(entries), lower_(lower) {}

    /// The entries at the places of a block of `blockCount` pixels, or of a part of it; `range` is the block's.
    void Look(simd::SPlaceRange range, u32 blockCount, const u16* places, u8* status, u32 count) {
        if (!Knows(range, blockCount)) return simd::FetchStatus(entries_, places, status, count);
        if (runs_.count > 1) return simd::StatusOfRuns(runs_, places, status, count);
        std::memset(status, runs_.values[0], count);
    }

  private:
    bool Knows(simd::SPlaceRange range, u32 count) {
        if (range.least >= known_.least && range.greatest <= known_.greatest) return runs_.count != 0;
        // NaN has come to place 0 when that lies below the lower limit: what stands between may be no entry.
        if (range.least < lower_) return false;
        const simd::SPlaceRange both{std::min(range.least, known_.least), std::max(range.greatest, known_.greatest)};
        // Not where it takes longer to find out than the entries of the block.
        if (u32{both.greatest} - both.least > 4 * count) return false;
        known_ = both;
        FindRuns();
        return runs_.count != 0;
    }
    /// None where there are too many.
    void FindRuns() {
        runs_.count = 0;
        for (u32 at = known_.least; at <= known_.greatest; ++runs_.count) {
            if (runs_.count == simd::SStatusRuns::kMost) {
                runs_.count = 0;
                return;
            }
            runs_.starts[runs_.count] = static_cast<u16>(at);
            runs_.values[runs_.count] = entries_[at];
            at += static_cast<u32>(simd::LeadingBytes(entries_ + at, known_.greatest + 1U - at, entries_[at]));
        }
    }

    const u8* entries_;
    u16 lower_;
    simd::SPlaceRange known_ = {65535, 0};
    simd::SStatusRuns runs_;
};

/// One pair of tables for all pixels.
class CSingleTable {
  public:
    CSingleTable(const float* lut, const u8* statusLut, u16 lower) : lut_(lut), status_(statusLut, lower) {}

    template <class Run>
    void Look(const Run&, const u16* places, float* values, u8* status, u32 count) {
        simd::FetchValues(lut_, places, values, count);
        if (status) status_.Look(simd::RangeOf(places, count), count, places, status, count);
    }

  private:
    const float* lut_;
    CStatusTable status_;
};

/// The pair of tables of each pixel's preset. Merged frames hold long stretches of one preset: such a stretch goes as
/// with a single pair, and only what lies between pixel by pixel.
class CPresetTables {
  public:
    CPresetTables(const u8* presets, const float* const* luts, const u8* const* statusLuts, u16 lower)
        : presets_(presets), luts_(luts), statusLuts_(statusLuts), lower_(lower) {}

    template <class Run>
    void Look(const Run& run, const u16* places, float* values, u8* status, u32 count) {
        SElementScratch scratch;
        const u8* preset = static_cast<const u8*>(ViewElements(run, presets_, 1, scratch));
        ForEachStretch(
            preset, count, [&](u32 at, u32 n) { simd::FetchValues(luts_[preset[at]], places + at, values + at, n); },
            [&](u32 i) { values[i] = luts_[preset[i]][places[i]]; });
        if (!status) return;
        const simd::SPlaceRange range = simd::RangeOf(places, count);
        ForEachStretch(
            preset, count,
            [&](u32 at, u32 n) {
                if (preset[at] >= kMapPresets)
                    return simd::FetchStatus(statusLuts_[preset[at]], places + at, status + at, n);
                std::optional<CStatusTable>& table = status_[preset[at]];
                if (!table) table.emplace(statusLuts_[preset[at]], lower_);
                table->Look(range, count, places + at, status + at, n);
            },
            [&](u32 i) { status[i] = statusLuts_[preset[i]][places[i]]; });
    }

  private:
    /// Calls `whole(at, n)` for n pixels of one preset, a step or more, and `single(i)` for each pixel between.
    template <class Whole, class Single>
    static void ForEachStretch(const u8* preset, u32 count, const Whole& whole, const Single& single) {
        for (u32 at = 0; at < count;) {
            const u32 step = std::min(kStretchStep, count - at);
            if (step == kStretchStep && StartsStretch(preset + at)) {
                const auto n = static_cast<u32>(simd::LeadingBytes(preset + at, count - at, preset[at]));
                whole(at, n);
                at += n;
            } else {
                for (const u32 end = at + step; at < end; ++at) single(at);
            }
        }
    }
    const u8* presets_;
    const float* const* luts_;
    const u8* const* statusLuts_;
    u16 lower_;
    std::optional<CStatusTable> status_[kMapPresets];  ///< of presets that occurred: others have no entry
};

struct SCall {
    STypedData source;
    STypedData destination;
    u8* status;
    u16 lower;
    u16 upper;
};

template <class Selection, class Tables>
bool Apply(const Selection& selection, const SCall& call, Tables tables) {
    const FLutIndexSpan findPlaces = LutIndexFunction(call.source.type);
    const FConvertSpan convert = ConvertSpanFunction(Flt32, call.destination.type);
    if (!findPlaces || !convert) return false;
    const std::size_t from = ElementSize(call.source.type), to = ElementSize(call.destination.type);
    const bool direct = call.destination.type == Flt32;
    ForEachBlock<kBlock>(selection, [&](const auto& run) {
        SElementScratch scratch;
        u16 room[kBlock];
        float block[kBlock];
        const void* pixels = ViewElements(run, call.source.data, from, scratch);
        const u16* places = findPlaces(pixels, room, run.count, call.lower, call.upper);
        u8* out = static_cast<u8*>(call.destination.data) + run.out * to;
        float* values = direct ? static_cast<float*>(call.destination.data) + run.out : block;
        tables.Look(run, places, values, call.status ? call.status + run.out : nullptr, run.count);
        if (!direct) convert(values, out, run.count);
    });
    return true;
}

template <class Selection>
bool ApplySingle(const Selection& selection, const SCall& call, const float* lut, const u8* statusLut) {
    return Apply(selection, call, CSingleTable(lut, statusLut, call.lower));
}

/// Without a preset map all pixels are of preset 0.
template <class Selection>
bool ApplyPerPreset(const Selection& selection, const SCall& call, const u8* presets, float* const* luts,
                    u8* const* statusLuts) {
    if (presets) return Apply(selection, call, CPresetTables(presets, luts, statusLuts, call.lower));
    return ApplySingle(selection, call, luts[0], call.status ? statusLuts[0] : nullptr);
}

}  // namespace

bool ApplyLUT(STypedData source, STypedData destination, u8* status, u32 count, float* lut, u8* statusLut, u16 lower,
              u16 upper) {
    return ApplySingle(SWhole{count}, {source, destination, status, lower, upper}, lut, statusLut);
}

bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u32 count,
              float* const* luts, u8* const* statusLuts, u16 lower, u16 upper) {
    return ApplyPerPreset(SWhole{count}, {source, destination, status, lower, upper}, sourceStatus, luts, statusLuts);
}

bool ApplyLUT(STypedData source, STypedData destination, u8* status, const u32* indices, u32 count, float* lut,
              u8* statusLut, u16 lower, u16 upper) {
    return ApplySingle(SIndexList{indices, count}, {source, destination, status, lower, upper}, lut, statusLut);
}

bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, const u32* indices,
              u32 count, float* const* luts, u8* const* statusLuts, u16 lower, u16 upper) {
    return ApplyPerPreset(SIndexList{indices, count}, {source, destination, status, lower, upper}, sourceStatus, luts,
                          statusLuts);
}

bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16, SArea area, float* lut,
              u8* statusLut, u16 lower, u16 upper) {
    return ApplySingle(SRectangle{width, area}, {source, destination, status, lower, upper}, lut, statusLut);
}

bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width, u16, SArea area,
              float* const* luts, u8* const* statusLuts, u16 lower, u16 upper) {
    return ApplyPerPreset(SRectangle{width, area}, {source, destination, status, lower, upper}, sourceStatus, luts,
                          statusLuts);
}

bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16, const TArray<SScanLine>& lines,
              float* lut, u8* statusLut, u16 lower, u16 upper) {
    return ApplySingle(SLines{width, lines}, {source, destination, status, lower, upper}, lut, statusLut);
}

bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width, u16,
              const TArray<SScanLine>& lines, float* const* luts, u8* const* statusLuts, u16 lower, u16 upper) {
    return ApplyPerPreset(SLines{width, lines}, {source, destination, status, lower, upper}, sourceStatus, luts,
                          statusLuts);
}

bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16, SArea area, const u8* mask,
              u32 maskStride, float* lut, u8* statusLut, u16 lower, u16 upper) {
    return ApplySingle(SMasked{width, area, mask, maskStride}, {source, destination, status, lower, upper}, lut,
                       statusLut);
}

bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width, u16, SArea area,
              const u8* mask, u32 maskStride, float* const* luts, u8* const* statusLuts, u16 lower, u16 upper) {
    return ApplyPerPreset(SMasked{width, area, mask, maskStride}, {source, destination, status, lower, upper},
                          sourceStatus, luts, statusLuts);
}

}  // namespace ovix::reduce
