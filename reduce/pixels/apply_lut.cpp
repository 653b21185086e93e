#include "reduce/pixels/apply_lut.h"

#include "core/convert_array.h"
#include "core/visit.h"
#include "reduce/pixels/lut_fetch.h"
#include "reduce/pixels/lut_index.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

namespace {

/// Pixels that go through the steps of this kernel together.
constexpr u32 kBlock = 2048;

/// One pair of tables for all pixels.
class CSingleTable {
  public:
    CSingleTable(const float* lut, const u8* statusLut, u16 lower) : lut_(lut), statusLut_(statusLut), lower_(lower) {}

    template <class Run>
    void Look(const Run&, const u16* places, float* values, u8* status, u32 count) {
        FetchValues(lut_, places, values, count);
        if (!status) return;
        if (IsUniform(simd::RangeOf(places, count), count)) {
            std::memset(status, uniformStatus_, count);
        } else {
            FetchStatus(statusLut_, places, status, count);
        }
    }

  private:
    /// A status table holds few, long stretches of one value. Whether the places from the least to the greatest of a
    /// block lie in one of them is known much sooner than the entry of each pixel. What was found out is kept.
    bool IsUniform(simd::SPlaceRange range, u32 count) {
        if (range.least >= uniform_.least && range.greatest <= uniform_.greatest) return true;
        const u32 length = u32{range.greatest} - range.least + 1;
        // NaN has come to place 0 when that lies below the lower limit: what stands between may be no entry.
        if (range.least < lower_ || length > 4 * count) return false;
        const u8 value = statusLut_[range.least];
        if (!simd::AllBytesAre(statusLut_ + range.least, length, value)) return false;
        uniform_ = range;
        uniformStatus_ = value;
        return true;
    }

    const float* lut_;
    const u8* statusLut_;
    u16 lower_;
    simd::SPlaceRange uniform_ = {65535, 0};
    u8 uniformStatus_ = 0;
};

/// The pair of tables of each pixel's preset.
class CPresetTables {
  public:
    CPresetTables(const u8* presets, const float* const* luts, const u8* const* statusLuts)
        : presets_(presets), luts_(luts), statusLuts_(statusLuts) {}

    template <class Run>
    void Look(const Run& run, const u16* places, float* values, u8* status, u32 count) {
        SElementScratch scratch;
        const u8* preset = static_cast<const u8*>(ViewElements(run, presets_, 1, scratch));
        for (u32 i = 0; i < count; ++i) values[i] = luts_[preset[i]][places[i]];
        if (!status) return;
        for (u32 i = 0; i < count; ++i) status[i] = statusLuts_[preset[i]][places[i]];
    }

  private:
    const u8* presets_;
    const float* const* luts_;
    const u8* const* statusLuts_;
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
    if (presets) return Apply(selection, call, CPresetTables(presets, luts, statusLuts));
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
