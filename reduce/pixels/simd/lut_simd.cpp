#include "reduce/pixels/simd/lut_simd.h"

#include <algorithm>

#include "reduce/pixels/lut_index.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/lut_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void LimitToPlaces(const u16* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const hn::ScalableTag<u16> d;
    const auto low = hn::Set(d, lower), high = hn::Set(d, upper);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto x = hn::LoadU(d, pixels + i);
        hn::StoreU(hn::IfThenElse(hn::Lt(x, low), low, hn::Min(x, high)), d, places + i);
    }
    for (; i < count; ++i) places[i] = pixels[i] < lower ? lower : std::min(pixels[i], upper);
}

/// Between the limits a value is not negative and fits 31 bits, so only the upward half of the rounding is left.
template <class D>
hn::Vec<hn::RebindToSigned<D>> PlacesOf(D d, hn::Vec<D> x, hn::Vec<D> low, hn::Vec<D> high) {
    const hn::RebindToSigned<D> di;
    const auto number = hn::Eq(x, x);
    const auto limited = hn::IfThenElse(hn::Lt(x, low), low, hn::IfThenElse(hn::Gt(x, high), high, x));
    const auto defined = hn::IfThenElseZero(number, limited);
    const auto whole = hn::ConvertTo(di, defined);
    const auto up = hn::Ge(hn::Sub(defined, hn::ConvertTo(d, whole)), hn::Set(d, 0.5f));
    return hn::Sub(whole, hn::VecFromMask(di, hn::RebindMask(di, up)));
}

void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const hn::ScalableTag<float> d;
    const hn::Rebind<u16, decltype(d)> d16;
    const auto low = hn::Set(d, lower), high = hn::Set(d, upper);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        hn::StoreU(hn::DemoteTo(d16, PlacesOf(d, hn::LoadU(d, pixels + i), low, high)), d16, places + i);
    }
    for (; i < count; ++i) places[i] = LutIndex(pixels[i], lower, upper);
}

SPlaceRange RangeOf(const u16* places, std::size_t count) {
    const hn::ScalableTag<u16> d;
    SPlaceRange range{places[0], places[0]};
    std::size_t i = 0;
    if (count >= hn::Lanes(d)) {
        auto least = hn::LoadU(d, places), greatest = least;
        for (i = hn::Lanes(d); i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
            const auto k = hn::LoadU(d, places + i);
            least = hn::Min(least, k);
            greatest = hn::Max(greatest, k);
        }
        range = {hn::GetLane(hn::MinOfLanes(d, least)), hn::GetLane(hn::MaxOfLanes(d, greatest))};
    }
    for (; i < count; ++i) range = {std::min(range.least, places[i]), std::max(range.greatest, places[i])};
    return range;
}

bool AllBytesAre(const u8* bytes, std::size_t count, u8 value) {
    const hn::ScalableTag<u8> d;
    const auto wanted = hn::Set(d, value);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        if (!hn::AllTrue(d, hn::Eq(hn::LoadU(d, bytes + i), wanted))) return false;
    }
    return std::all_of(bytes + i, bytes + count, [&](u8 byte) { return byte == value; });
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(LimitToPlaces);
HWY_EXPORT(RoundToPlaces);
HWY_EXPORT(RangeOf);
HWY_EXPORT(AllBytesAre);

void LimitToPlaces(const u16* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(LimitToPlaces)(pixels, places, count, lower, upper);
}
void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(RoundToPlaces)(pixels, places, count, lower, upper);
}
SPlaceRange RangeOf(const u16* places, std::size_t count) { return HWY_DYNAMIC_DISPATCH(RangeOf)(places, count); }
bool AllBytesAre(const u8* bytes, std::size_t count, u8 value) {
    return HWY_DYNAMIC_DISPATCH(AllBytesAre)(bytes, count, value);
}

}  // namespace ovix::reduce::simd
#endif
