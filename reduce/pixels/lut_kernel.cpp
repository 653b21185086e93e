#include "reduce/pixels/lut_kernel.h"

#include <algorithm>
#include <cstring>

#include "core/visit.h"
#include "reduce/pixels/formulas.h"

namespace ovix::reduce {

namespace {

template <class S>
const u16* FindPlaces(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const S* x = static_cast<const S*>(pixels);
    for (std::size_t i = 0; i < count; ++i) places[i] = LutIndex(static_cast<float>(x[i]), lower, upper);
    return places;
}

template <>
const u16* FindPlaces<u16>(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const u16* x = static_cast<const u16*>(pixels);
    if (lower == 0 && upper == 65535) return x;
    simd::LimitToPlaces(x, places, count, lower, upper);
    return places;
}

template <>
const u16* FindPlaces<float>(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    simd::RoundToPlaces(static_cast<const float*>(pixels), places, count, lower, upper);
    return places;
}

}  // namespace

FLutIndexSpan LutIndexFunction(EDataType type) {
    FLutIndexSpan function = nullptr;
    Visit(type, [&]<class S>(TElement<S>) { function = &FindPlaces<S>; });
    return function;
}

void CStatusTable::Look(simd::SPlaceRange range, u32 blockCount, const u16* places, u8* status, u32 count) {
    if (!Knows(range, blockCount)) return simd::FetchStatus(entries_, places, status, count);
    if (runs_.count > 1) return simd::StatusOfRuns(runs_, places, status, count);
    std::memset(status, runs_.values[0], count);
}

bool CStatusTable::Knows(simd::SPlaceRange range, u32 count) {
    if (range.least >= known_.least && range.greatest <= known_.greatest) return runs_.count != 0;
    // NaN has come to place 0 when that lies below the lower limit: what stands between may be no entry.
    if (range.least < lower_) return false;
    const simd::SPlaceRange both{std::min(range.least, known_.least), std::max(range.greatest, known_.greatest)};
    // Not where it takes longer to find out than the entries of the pixels did that asked so far.
    asked_ += count;
    if (u32{both.greatest} - both.least > 4 * asked_) return false;
    known_ = both;
    FindRuns();
    return runs_.count != 0;
}

/// None where there are too many.
void CStatusTable::FindRuns() {
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

CLutKernel::CLutKernel(EDataType source, EDataType destination, const float* lut, const u8* statusLut, u16 lower,
                       u16 upper)
    : findPlaces_(LutIndexFunction(source)),
      convert_(ConvertSpanFunction(Flt32, destination)),
      from_(ElementSize(source)),
      to_(ElementSize(destination)),
      direct_(destination == Flt32),
      lut_(lut),
      status_(statusLut, lower),
      lower_(lower),
      upper_(upper) {}

void CLutKernel::operator()(const void* pixels, void* destination, u8* status, std::size_t count) {
    const u8* x = static_cast<const u8*>(pixels);
    u8* out = static_cast<u8*>(destination);
    for (std::size_t at = 0; at < count; at += kLutBlock) {
        u16 room[kLutBlock];
        float block[kLutBlock];
        const u32 n = static_cast<u32>(std::min<std::size_t>(kLutBlock, count - at));
        const u16* places = findPlaces_(x + at * from_, room, n, lower_, upper_);
        float* values = direct_ ? static_cast<float*>(destination) + at : block;
        Look(places, values, status ? status + at : nullptr, n);
        if (!direct_) convert_(values, out + at * to_, n);
    }
}

void CLutKernel::Look(const u16* places, float* values, u8* status, u32 count) {
    simd::FetchValues(lut_, places, values, count);
    LookAtStatus(places, status, count);
}

void CLutKernel::LookAtStatus(const u16* places, u8* status, u32 count) {
    if (status) status_.Look(simd::RangeOf(places, count), count, places, status, count);
}

void CPresetLuts::Look(const u8* presets, const u16* places, float* values, u8* status, u32 count) {
    const simd::SPlaceRange range = status ? simd::RangeOf(places, count) : simd::SPlaceRange{};
    for (u32 at = 0; at < count;) {
        const u32 step = std::min(kStretchStep, count - at);
        if (step == kStretchStep && StartsStretch(presets + at)) {
            const u8 preset = presets[at];
            const auto n = static_cast<u32>(simd::LeadingBytes(presets + at, count - at, preset));
            simd::FetchValues(luts_[preset], places + at, values + at, n);
            if (status) LookAtStatus(preset, range, count, places + at, status + at, n);
            at += n;
            continue;
        }
        for (const u32 end = at + step; at < end; ++at) {
            values[at] = luts_[presets[at]][places[at]];
            if (!status) continue;
            const u8* entries = StatusLut(presets[at]);
            status[at] = entries ? entries[places[at]] : u8{0};
        }
    }
}

void CPresetLuts::LookAtStatus(u8 preset, simd::SPlaceRange range, u32 blockCount, const u16* places, u8* status,
                               u32 n) {
    const u8* entries = StatusLut(preset);
    if (!entries) {
        std::memset(status, 0, n);
        return;
    }
    // Numbers beyond the presets that a source can have are the caller's business, and plain indices.
    if (preset >= kMapPresets) return simd::FetchStatus(entries, places, status, n);
    if (!status_[preset]) status_[preset].emplace(entries, lower_);
    status_[preset]->Look(range, blockCount, places, status, n);
}

}  // namespace ovix::reduce
