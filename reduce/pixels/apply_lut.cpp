#include "reduce/pixels/apply_lut.h"

#include <optional>

#include "core/convert_array.h"
#include "core/visit.h"
#include "reduce/pixels/lut_fetch.h"
#include "reduce/pixels/lut_index.h"
#include "reduce/pixels/preset_map.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

namespace {

/// Pixels that go through the steps of this kernel together.
constexpr u32 kBlock = 2048;

/// A table of status bytes. It holds few, long stretches of one value: whether the places from the least to the
/// greatest of a block lie in one of them is known much sooner than the entry of each pixel. What was found out is
/// kept, and grows.
class CStatusTable {
  public:
    CStatusTable(const u8* entries, u16 lower) : entries_(entries), lower_(lower) {}

    /// The one value of all entries in the range, for a block of `count` pixels.
    std::optional<u8> OneValue(simd::SPlaceRange range, u32 count) {
        if (range.least >= known_.least && range.greatest <= known_.greatest) return value_;
        // NaN has come to place 0 when that lies below the lower limit: what stands between may be no entry.
        if (range.least < lower_) return {};
        if (!Grow(range, count)) {
            const u8 value = entries_[range.least];
            if (!AllAre(value, range.least, range.greatest, count)) return {};
            known_ = range;
            value_ = value;
        }
        return value_;
    }
    void Fetch(const u16* places, u8* status, u32 count) const { FetchStatus(entries_, places, status, count); }

  private:
    bool Grow(simd::SPlaceRange range, u32 count) {
        if (known_.least > known_.greatest) return false;
        const simd::SPlaceRange both{std::min(range.least, known_.least), std::max(range.greatest, known_.greatest)};
        if (!AllAre(value_, both.least, known_.least, count) ||
            !AllAre(value_, known_.greatest, both.greatest, count)) {
            return false;
        }
        known_ = both;
        return true;
    }
    /// False also where it takes longer to find out than the entries of `count` pixels.
    bool AllAre(u8 value, u16 from, u16 to, u32 count) const {
        const u32 length = u32{to} - from + 1;
        return length <= 4 * count && simd::AllBytesAre(entries_ + from, length, value);
    }

    const u8* entries_;
    u16 lower_;
    simd::SPlaceRange known_ = {65535, 0};
    u8 value_ = 0;
};

/// One pair of tables for all pixels.
class CSingleTable {
  public:
    CSingleTable(const float* lut, const u8* statusLut, u16 lower) : lut_(lut), status_(statusLut, lower) {}

    template <class Run>
    void Look(const Run&, const u16* places, float* values, u8* status, u32 count) {
        FetchValues(lut_, places, values, count);
        if (!status) return;
        if (const auto value = status_.OneValue(simd::RangeOf(places, count), count)) {
            std::memset(status, *value, count);
        } else {
            status_.Fetch(places, status, count);
        }
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
        u32 seen = 0;
        ForEachStretch(
            preset, count,
            [&](u32 at, u32 n) {
                FetchValues(luts_[preset[at]], places + at, values + at, n);
                seen |= BitOf(preset[at]);
            },
            [&](u32 i) {
                values[i] = luts_[preset[i]][places[i]];
                seen |= BitOf(preset[i]);
            });
        if (!status) return;
        if (const auto value = OneStatus(seen, simd::RangeOf(places, count), count)) {
            std::memset(status, *value, count);
            return;
        }
        ForEachStretch(
            preset, count, [&](u32 at, u32 n) { FetchStatus(statusLuts_[preset[at]], places + at, status + at, n); },
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
    /// Numbers beyond the presets that a source can have share a bit.
    static u32 BitOf(u8 preset) { return 1u << std::min<u32>(preset, kMapPresets); }

    /// The one status that all presets of a block have for its places.
    std::optional<u8> OneStatus(u32 seen, simd::SPlaceRange range, u32 count) {
        std::optional<u8> one;
        for (u8 p = 0; p < kMapPresets; ++p) {
            if (!(seen & BitOf(p))) continue;
            if (!status_[p]) status_[p].emplace(statusLuts_[p], lower_);
            const auto value = status_[p]->OneValue(range, count);
            if (!value || (one && one != value)) return {};
            one = value;
        }
        return seen & BitOf(kMapPresets) ? std::nullopt : one;
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
