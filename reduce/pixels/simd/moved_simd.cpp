#include "reduce/pixels/simd/moved_simd.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/moved_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Nearly all pixels stay where they are, so four registers at a time are tested as one.
void FindMoved(const u32* map, u32 first, u32 count, SMovedPixels& moved) {
    const hn::ScalableTag<u32> d;
    const u32 lanes = static_cast<u32>(hn::Lanes(d));
    const auto base = hn::Set(d, first), step = hn::Set(d, lanes), step4 = hn::Set(d, 4 * lanes);
    auto place = hn::Iota(d, 0);
    u32 found = 0, i = 0;
    const auto differences = [&](u32 at, hn::Vec<decltype(d)> places)
                                 HWY_ATTR { return hn::Xor(hn::LoadU(d, map + at), hn::Add(places, base)); };
    for (; i + 4 * lanes <= count; i += 4 * lanes, place = hn::Add(place, step4)) {
        const auto place1 = hn::Add(place, step), place2 = hn::Add(place1, step), place3 = hn::Add(place2, step);
        const auto all = hn::Or(hn::Or(differences(i, place), differences(i + lanes, place1)),
                                hn::Or(differences(i + 2 * lanes, place2), differences(i + 3 * lanes, place3)));
        if (HWY_LIKELY(hn::AllTrue(d, hn::Eq(all, hn::Zero(d))))) continue;
        auto here = place;
        for (u32 at = i; at < i + 4 * lanes; at += lanes, here = hn::Add(here, step)) {
            // Compressed in a register: storing while compressing is very slow on some processors.
            const auto differs = hn::Ne(differences(at, here), hn::Zero(d));
            hn::StoreU(hn::Compress(here, differs), d, moved.places + found);
            found += static_cast<u32>(hn::CountTrue(d, differs));
        }
    }
    for (; i < count; ++i) {
        if (map[i] != first + i) moved.places[found++] = i;
    }
    moved.count = found;
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(FindMoved);

void FindMoved(const u32* map, u32 first, u32 count, SMovedPixels& moved) {
    HWY_DYNAMIC_DISPATCH(FindMoved)(map, first, count, moved);
}

}  // namespace ovix::reduce::simd
#endif
