#include "reduce/pixels/apply_lut.h"

#include "reduce/pixels/lut_kernel.h"
#include "reduce/pixels/parts.h"

namespace ovix::reduce {

namespace {

struct SCall {
    STypedData source;
    STypedData destination;
    u8* status;
    u16 lower;
    u16 upper;
};

bool IsTaken(const SCall& call) { return IsNumeric(call.source.type) && IsNumeric(call.destination.type); }

template <class Selection>
bool ApplySingle(const Selection& selection, const SCall& call, const float* lut, const u8* statusLut) {
    if (!IsTaken(call)) return false;
    const auto& [source, destination, status, lower, upper] = call;
    CLutKernel kernel(source.type, destination.type, lut, statusLut, lower, upper);
    ForEachRun(selection, [&](const auto& run) {
        SElementScratch scratch;
        kernel(ViewElements(run, source.data, ElementSize(source.type), scratch), ElementAt(destination, run.out),
               status ? status + run.out : nullptr, run.count);
    });
    return true;
}

/// Without a preset map all pixels are of preset 0.
template <class Selection>
bool ApplyPerPreset(const Selection& selection, const SCall& call, const u8* presets, float* const* luts,
                    u8* const* statusLuts) {
    if (!presets) return ApplySingle(selection, call, luts[0], call.status ? statusLuts[0] : nullptr);
    if (!IsTaken(call)) return false;
    const auto& [source, destination, status, lower, upper] = call;
    const FLutIndexSpan findPlaces = LutIndexFunction(source.type);
    const FConvertSpan convert = ConvertSpanFunction(Flt32, destination.type);
    CPresetLuts tables(luts, statusLuts, lower);
    ForEachBlock<kLutBlock>(selection, [&](const auto& run) {
        SElementScratch scratch;
        u16 room[kLutBlock];
        float block[kLutBlock];
        u8* out = ElementAt(destination, run.out);
        float* values = destination.type == Flt32 ? reinterpret_cast<float*>(out) : block;
        const void* pixels = ViewElements(run, source.data, ElementSize(source.type), scratch);
        const u16* places = findPlaces(pixels, room, run.count, lower, upper);
        TScratch<u8> gathered;
        tables.Look(run.View(presets, gathered), places, values, status ? status + run.out : nullptr, run.count);
        if (values == block) convert(block, out, run.count);
    });
    return true;
}

}  // namespace

bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]) {
    for (std::size_t at = 0; at < count;) {
        const u8 preset = presets[at];
        if (preset >= kMapPresets || !usable[preset]) return false;
        const bool stretch = count - at >= kStretchStep && StartsStretch(presets + at);
        at += stretch ? simd::LeadingBytes(presets + at, count - at, preset) : 1;
    }
    return true;
}

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
