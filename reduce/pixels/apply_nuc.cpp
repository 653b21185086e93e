#include "reduce/pixels/apply_nuc.h"

#include "core/visit.h"
#include "reduce/pixels/nuc_kernel.h"

namespace ovix::reduce {

namespace {

/// Both buffers of a call, and the correction between them.
class CNuc {
  public:
    CNuc(STypedData dest, STypedData source, u32 count, int clip, double minimum, double maximum)
        : correct_(source.type, dest.type, clip != 0, minimum, maximum),
          frame_(correct_, source.data, ElementSize(source.type), ElementSize(dest.type)),
          dest_(static_cast<u8*>(dest.data)),
          source_(static_cast<const u8*>(source.data)),
          from_(ElementSize(source.type)),
          to_(ElementSize(dest.type)),
          // Counts come from callers that reckon with signed numbers.
          hasWork_(static_cast<i32>(count) > 0 && correct_.IsValid()) {}
    CNuc(const CNuc&) = delete;
    CNuc& operator=(const CNuc&) = delete;

    bool HasWork() const { return hasWork_; }

    /// The pixels first to first + count - 1 of the frame, to the same places.
    void Whole(const SCorrectionTables& tables, u32 first, u32 count) const {
        if (!tables.replace) return frame_.Row(tables, first, count, DestAt(first));
        for (u32 at = 0, n; at < count; at += n) {
            n = std::min(simd::kMovedBlock, count - at);
            if (source_ == dest_) {
                InPlace(tables, first + at, n);
            } else {
                frame_.Block(tables, first + at, n, DestAt(first + at));
            }
        }
    }

    /// At most `kRunBlock` pixels at frame indices, to the places from `out` on.
    void Listed(const SCorrectionTables& tables, const u32* indices, u32 out, u32 count) const {
        frame_.Listed(tables, indices, count, DestAt(out));
    }
    /// The same with the data at the places from `out` on; only the tables are listed.
    void ListedTables(const SCorrectionTables& tables, const u32* indices, u32 out, u32 count) const {
        frame_.Listed(tables, source_ + out * from_, indices, count, DestAt(out));
    }

  private:
    u8* DestAt(std::size_t place) const { return dest_ + place * to_; }

    /// The pixel that stands in for a moved one may be corrected already, and is then corrected once more: the order of
    /// the pixels decides.
    void InPlace(const SCorrectionTables& tables, u32 first, u32 count) const {
        simd::SMovedPixels moved;
        simd::FindMoved(tables.replace + first, first, count, moved);
        u32 next = 0;
        for (u32 i = 0; i < moved.count; ++i) {
            const u32 place = moved.places[i];
            frame_.Row(tables, first + next, place - next, DestAt(first + next));
            frame_.Moved(tables, first, &place, 1, DestAt(first));
            next = place + 1;
        }
        frame_.Row(tables, first + next, count - next, DestAt(first + next));
    }

    CNucCorrector correct_;
    TFrameCorrection<CNucCorrector> frame_;
    u8* dest_;
    const u8* source_;
    std::size_t from_;
    std::size_t to_;
    bool hasWork_;
};

/// Calls f(preset, at, n) for each stretch of pixels of one preset, cut into parts of at most `longest`.
template <class PresetAt, class F>
void ForEachPreset(u32 count, u32 longest, PresetAt&& presetAt, F&& f) {
    for (u32 at = 0, n; at < count; at += n) {
        const u8 preset = presetAt(at);
        const u32 most = std::min(longest, count - at);
        for (n = 1; n < most && presetAt(at + n) == preset;) ++n;
        f(preset, at, n);
    }
}

}  // namespace

void ApplyNUC(STypedData destination, STypedData source, u32 count, float* gain, i16* offset, u32* replace, int clip,
              double minimum, double maximum) {
    const CNuc nuc(destination, source, count, clip, minimum, maximum);
    if (nuc.HasWork()) nuc.Whole({gain, offset, replace}, 0, count);
}

void ApplyNUC(STypedData destination, STypedData source, const u8* status, u32 count, float* const* gains,
              i16* const* offsets, u32* const* replaces, int clip, double minimum, double maximum) {
    const CNuc nuc(destination, source, count, clip, minimum, maximum);
    if (!nuc.HasWork()) return;
    const SPresetTables tables{gains, offsets, replaces};
    const auto presetAt = [=](u32 i) { return status ? status[i] : u8{0}; };
    ForEachPreset(count, count, presetAt, [&](u8 preset, u32 at, u32 n) { nuc.Whole(tables.Of(preset), at, n); });
}

void ApplyNUC(STypedData destination, STypedData source, const u32* indices, u32 count, float* gain, i16* offset,
              u32* replace, int clip, double minimum, double maximum) {
    const CNuc nuc(destination, source, count, clip, minimum, maximum);
    if (!nuc.HasWork()) return;
    const SCorrectionTables tables{gain, offset, replace};
    for (u32 at = 0, n; at < count; at += n) {
        n = std::min(kRunBlock, count - at);
        if (replace) {
            u32 replacing[kRunBlock];
            GatherElements(replace, indices + at, n, replacing, sizeof(u32));
            nuc.Listed(tables, replacing, at, n);
        } else {
            // Without a map the source is compact, and the list leads to the tables alone.
            nuc.ListedTables(tables, indices + at, at, n);
        }
    }
}

void ApplyNUC(STypedData destination, STypedData source, const u32* indices, const u8* status, u32 count,
              float* const* gains, i16* const* offsets, u32* const* replaces, int clip, double minimum,
              double maximum) {
    const CNuc nuc(destination, source, count, clip, minimum, maximum);
    if (!nuc.HasWork()) return;
    const SPresetTables all{gains, offsets, replaces};
    const auto presetAt = [=](u32 i) { return status ? status[indices[i]] : u8{0}; };
    ForEachPreset(count, kRunBlock, presetAt, [&](u8 preset, u32 at, u32 n) {
        const SCorrectionTables tables = all.Of(preset);
        u32 from[kRunBlock];
        for (u32 i = 0; i < n; ++i) {
            const u32 k = indices[at + i];
            // The map is read at the running position, but at the listed pixel when the results are clipped.
            from[i] = tables.replace ? tables.replace[clip ? k : at + i] : k;
        }
        nuc.Listed(tables, from, at, n);
    });
}

}  // namespace ovix::reduce
