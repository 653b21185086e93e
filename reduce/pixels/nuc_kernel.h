#pragma once

#include <optional>

#include "core/typed_data.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/simd/nuc_simd.h"

/// The correction of pixels that stand one behind the other, and of a frame's pixels wherever they stand. For a chain
/// over blocks of a frame: `TFrameCorrection(CNucCorrector(...), ...)` gives any stretch of the corrected frame.
namespace ovix::reduce {

/// Gain, offset, cast and clip of pixels that stand one behind the other, for one pair of types. It knows nothing of
/// selections, presets and replacement maps.
class CNucCorrector {
  public:
    /// The limits are cast to the destination type once, here.
    CNucCorrector(EDataType source, EDataType dest, bool clip, double minimum, double maximum);

    /// False for a pair that has no correction: then nothing may be corrected.
    bool IsValid() const { return formula_ != nullptr; }

    /// `gain` and `offset` stand beside `x`; either may be null. `x` and `dest` may be one buffer when their elements
    /// have one width.
    void operator()(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count) const;

    /// The limits of corrected counts, where counts with a gain become counts in one loop; those of 16 bits where
    /// nothing is clipped.
    std::optional<TLimits<u16>> LimitsOfCounts() const;

    /// The result of a formula: the type depends on the source and on the tables.
    struct SResult {
        const void* data;
        EDataType type;
    };
    /// Up to `kBlock` pixels; answers the results, in `room` or, when they are the pixels themselves, in place.
    using FFormula = SResult (*)(const void* x, const float* gain, const i16* offset, void* room, std::size_t count);
    using FClip = void (*)(void* dest, std::size_t count, const void* low, const void* high);
    /// All steps at once; null limits do not clip.
    using FFused = void (*)(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count,
                            const void* low, const void* high);

    static constexpr std::size_t kBlock = 512;

  private:
    EDataType source_;
    EDataType dest_;
    FFormula formula_ = nullptr;
    FClip clip_ = nullptr;
    FFused fused_ = nullptr;
    alignas(8) u8 low_[8];
    alignas(8) u8 high_[8];
};

/// The correction tables of one preset, with one entry for each pixel of the frame; each may be null.
struct SCorrectionTables {
    const float* gain = nullptr;
    const i16* offset = nullptr;
    const u32* replace = nullptr;
};

/// The tables of all presets; an array may be null as well.
struct SPresetTables {
    float* const* gains;
    i16* const* offsets;
    u32* const* replaces;

    SCorrectionTables Of(u8 preset) const {
        return {gains ? gains[preset] : nullptr, offsets ? offsets[preset] : nullptr,
                replaces ? replaces[preset] : nullptr};
    }
};

/// A correction that works on pixels in a row, `correct(x, gain, offset, dest, count)`, applied to pixels of a frame
/// wherever they stand.
template <class Correct>
class TFrameCorrection {
  public:
    /// The sizes are those of a source and a destination element.
    TFrameCorrection(const Correct& correct, const void* frame, std::size_t from, std::size_t to)
        : correct_(correct), frame_(static_cast<const u8*>(frame)), from_(from), to_(to) {}

    /// The pixels from `first` on, as if there were no map. Any count.
    void Row(const SCorrectionTables& tables, std::size_t first, u32 count, void* out) const {
        correct_(frame_ + first * from_, tables.gain ? tables.gain + first : nullptr,
                 tables.offset ? tables.offset + first : nullptr, out, count);
    }

    /// The pixels from `first` on, the map followed; at most `simd::kMovedBlock`. The output must not be the frame.
    /// Nearly every entry of a map is the pixel itself: so a block is corrected as if it had none, and the few moved
    /// pixels again, apart from the rest.
    void Block(const SCorrectionTables& tables, u32 first, u32 count, void* out) const {
        simd::SMovedPixels moved;
        moved.count = 0;
        if (tables.replace) simd::FindMoved(tables.replace + first, first, count, moved);
        if (moved.count < count) Row(tables, first, count, out);
        Moved(tables, first, moved, out);
    }

    void Moved(const SCorrectionTables& tables, u32 first, const simd::SMovedPixels& moved, void* out) const {
        for (u32 at = 0; at < moved.count; at += kRunBlock) {
            Moved(tables, first, moved.places + at, std::min(kRunBlock, moved.count - at), out);
        }
    }

    /// Only the pixels at `places`, counted from `first`, each with the data and tables of the one that replaces it.
    void Moved(const SCorrectionTables& tables, u32 first, const u32* places, u32 count, void* out) const {
        u32 replacing[kRunBlock];
        SElementScratch results;
        GatherElements(tables.replace + first, places, count, replacing, sizeof(u32));
        Listed(tables, replacing, count, results.data);
        ScatterElements(results.data, out, places, count, to_);
    }

    /// The pixels at `count` frame indices, at most `kRunBlock`, one behind the other.
    void Listed(const SCorrectionTables& tables, const u32* indices, u32 count, void* out) const {
        SElementScratch room;
        const void* x = Pick(frame_, indices, count, room, from_);
        Listed(tables, x, indices, count, out);
    }

    /// The same for pixels that stand in a row while their tables are listed.
    void Listed(const SCorrectionTables& tables, const void* x, const u32* indices, u32 count, void* out) const {
        SElementScratch gain, offset;
        correct_(x, static_cast<const float*>(Pick(tables.gain, indices, count, gain, sizeof(float))),
                 static_cast<const i16*>(Pick(tables.offset, indices, count, offset, sizeof(i16))), out, count);
    }

  private:
    /// Null stays null.
    static const void* Pick(const void* all, const u32* indices, u32 count, SElementScratch& room, std::size_t size) {
        if (!all) return nullptr;
        GatherElements(all, indices, count, room.data, size);
        return room.data;
    }

    const Correct& correct_;
    const u8* frame_;
    std::size_t from_;
    std::size_t to_;
};

}  // namespace ovix::reduce
