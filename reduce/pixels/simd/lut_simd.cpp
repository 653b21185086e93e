#include "reduce/pixels/simd/lut_simd.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "reduce/pixels/formulas.h"

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

/// The entries by the gather instruction; of eight lanes, which is the fastest width where any pays.
void GatherValues(const float* table, const u16* places, float* values, std::size_t count) {
    const hn::CappedTag<float, 8> d;
    const hn::RebindToSigned<decltype(d)> di;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto at = hn::PromoteTo(di, hn::LoadU(hn::Rebind<u16, decltype(d)>(), places + i));
        hn::StoreU(hn::GatherIndex(d, table, at), d, values + i);
    }
    for (; i < count; ++i) values[i] = table[places[i]];
}

void StatusOfRuns(const SStatusRuns& runs, const u16* places, u8* status, std::size_t count) {
    const hn::ScalableTag<u16> d;
    const hn::Rebind<u8, decltype(d)> bytes;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto place = hn::LoadU(d, places + i);
        auto value = hn::Set(d, runs.values[0]);
        for (u32 run = 1; run < runs.count; ++run) {
            const auto before = hn::Lt(place, hn::Set(d, runs.starts[run]));
            value = hn::IfThenElse(before, value, hn::Set(d, runs.values[run]));
        }
        hn::StoreU(hn::TruncateTo(bytes, value), bytes, status + i);
    }
    for (; i < count; ++i) {
        status[i] = runs.values[0];
        for (u32 run = 1; run < runs.count; ++run) {
            if (places[i] >= runs.starts[run]) status[i] = runs.values[run];
        }
    }
}

std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value) {
    const hn::ScalableTag<u8> d;
    const auto wanted = hn::Set(d, value);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto other = hn::FindFirstTrue(d, hn::Ne(hn::LoadU(d, bytes + i), wanted));
        if (other >= 0) return i + static_cast<std::size_t>(other);
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
HWY_EXPORT(GatherValues);
HWY_EXPORT(StatusOfRuns);
HWY_EXPORT(LeadingBytes);

void LimitToPlaces(const u16* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(LimitToPlaces)(pixels, places, count, lower, upper);
}
void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    HWY_DYNAMIC_DISPATCH(RoundToPlaces)(pixels, places, count, lower, upper);
}
namespace {

/// One load holds four places, and few, wide stores take what single loads bring.
template <class T>
void FetchSingly(const T* table, const u16* places, T* entries, std::size_t count) {
    const std::size_t blocks = count / 16 * 16;
    for (std::size_t i = 0; i < blocks; i += 16) {
        T block[16];
        for (int j = 0; j < 16; j += 4) {
            u64 four;
            std::memcpy(&four, places + i + j, sizeof four);
            block[j] = table[four & 0xFFFF];
            block[j + 1] = table[four >> 16 & 0xFFFF];
            block[j + 2] = table[four >> 32 & 0xFFFF];
            block[j + 3] = table[four >> 48];
        }
        std::memcpy(entries + i, block, sizeof block);
    }
    for (std::size_t i = blocks; i < count; ++i) entries[i] = table[places[i]];
}

template <class F>
auto ShortestOf(int times, const F& f) {
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int i = 0; i < times; ++i) {
        const auto start = std::chrono::steady_clock::now();
        f();
        shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
    }
    return shortest;
}

bool TryGathering() {
    constexpr std::size_t kCount = 1024;
    float table[kCount] = {}, values[kCount];
    u16 places[kCount];
    for (std::size_t i = 0; i < kCount; ++i) places[i] = static_cast<u16>(i * 5 % kCount);
    const auto gathered = ShortestOf(9, [&] { HWY_DYNAMIC_DISPATCH(GatherValues)(table, places, values, kCount); });
    const auto single = ShortestOf(9, [&] { FetchSingly(table, places, values, kCount); });
    return gathered < single;
}

}  // namespace

/// It is by a quarter on some processors, and slower by a factor on others of the same instruction set. So it is tried,
/// once, which takes some microseconds.
bool GatheringPays() {
    static const bool pays = TryGathering();
    return pays;
}

void FetchValues(const float* table, const u16* places, float* values, std::size_t count) {
    if (GatheringPays()) {
        HWY_DYNAMIC_DISPATCH(GatherValues)(table, places, values, count);
    } else {
        FetchSingly(table, places, values, count);
    }
}
void FetchStatus(const u8* table, const u16* places, u8* status, std::size_t count) {
    FetchSingly(table, places, status, count);
}
void StatusOfRuns(const SStatusRuns& runs, const u16* places, u8* status, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(StatusOfRuns)(runs, places, status, count);
}
SPlaceRange RangeOf(const u16* places, std::size_t count) { return HWY_DYNAMIC_DISPATCH(RangeOf)(places, count); }
std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value) {
    return HWY_DYNAMIC_DISPATCH(LeadingBytes)(bytes, count, value);
}

}  // namespace ovix::reduce::simd
#endif
