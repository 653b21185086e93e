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

/// With 2^23 added, a value between the limits stands in single precision as a whole number, the nearest, and in the
/// low bits. A half that has gone to the even number below is sent up.
template <class D>
hn::Vec<hn::Rebind<u16, D>> PlacesOf(D d, hn::Vec<D> x, hn::Vec<D> low, hn::Vec<D> high) {
    const hn::RebindToUnsigned<D> du;
    const auto magic = hn::Set(d, 8388608.0f);
    const auto limited = hn::IfThenElseZero(hn::Eq(x, x), hn::Min(hn::Max(x, low), high));
    const auto shifted = hn::Add(limited, magic);
    const auto up = hn::Eq(hn::Sub(limited, hn::Sub(shifted, magic)), hn::Set(d, 0.5f));
    const auto places = hn::Sub(hn::BitCast(du, shifted), hn::VecFromMask(du, hn::RebindMask(du, up)));
    return hn::TruncateTo(hn::Rebind<u16, D>(), places);
}

void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const hn::ScalableTag<float> d;
    const hn::Rebind<u16, decltype(d)> d16;
    const auto low = hn::Set(d, lower), high = hn::Set(d, upper);
    std::size_t i = 0;
    if (lower <= upper) {
        for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
            hn::StoreU(PlacesOf(d, hn::LoadU(d, pixels + i), low, high), d16, places + i);
        }
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

std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value) {
    const hn::ScalableTag<u8> d;
    const auto wanted = hn::Set(d, value);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        if (!hn::AllTrue(d, hn::Eq(hn::LoadU(d, bytes + i), wanted))) break;
    }
    while (i < count && bytes[i] == value) ++i;
    return i;
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(LimitToPlaces);
HWY_EXPORT(RoundToPlaces);
HWY_EXPORT(RangeOf);
HWY_EXPORT(LeadingBytes);

void LimitToPlaces(const u16* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(LimitToPlaces)(pixels, places, count, lower, upper);
}
void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(RoundToPlaces)(pixels, places, count, lower, upper);
}
SPlaceRange RangeOf(const u16* places, std::size_t count) { return HWY_DYNAMIC_DISPATCH(RangeOf)(places, count); }
std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value) {
    return HWY_DYNAMIC_DISPATCH(LeadingBytes)(bytes, count, value);
}

}  // namespace ovix::reduce::simd
#endif
