#include "reduce/pixels/simd/stats_simd.h"

// The order of these lines is what compiles the file once for each instruction set.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/stats_simd.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "hwy/cache_control.h"
#include "hwy/contrib/algo/find-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

SExactFigures<u16> Measure(const u16* pixels, u32 count) {
    SExactFigures<u16> found{pixels[0], pixels[0], 0, 0};
    found.Include(pixels, count);
    return found;
}

#else

/// The hardware fetches ahead to the end of a page only: 4 KiB.
constexpr u32 kAhead = 2048;

/// Sums 32-bit lanes, taken as unsigned, into 64-bit ones.
template <class D64, class V32>
hn::Vec<D64> Widened(D64 d64, V32 v) {
    const auto pairs = hn::BitCast(d64, v);
    return hn::Add(hn::And(pairs, hn::Set(d64, 0xFFFFFFFF)), hn::ShiftRight<32>(pairs));
}

/// Counts are taken as signed distances s from 2^15, as only signed 16-bit lanes multiply into 32 bits: v is s + 2^15,
/// and v^2 is s^2 + 2^16 s + 2^30. Two squares may come to 2^31, which is why their sums count as unsigned.
SExactFigures<u16> Measure(const u16* pixels, u32 count) {
    const hn::ScalableTag<u16> d;
    const hn::RebindToSigned<decltype(d)> ds;
    const hn::Repartition<i32, decltype(d)> d32;
    const hn::Repartition<u64, decltype(d)> d64;
    const u32 lanes = static_cast<u32>(hn::Lanes(d));
    auto minimum = hn::Set(d, pixels[0]);
    auto maximum = minimum;
    auto sum = hn::Zero(d32);
    auto sumRest = hn::Zero(d32);  // a second accumulator, which some targets leave empty
    auto squares = hn::Zero(d64);
    const auto middle = hn::Set(d, u16{1} << 15);
    const auto one = hn::Set(ds, 1);
    u32 i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto v = hn::LoadU(d, pixels + i);
        hwy::Prefetch(pixels + i + kAhead);
        minimum = hn::Min(minimum, v);
        maximum = hn::Max(maximum, v);
        const auto s = hn::BitCast(ds, hn::Xor(v, middle));
        sum = hn::ReorderWidenMulAccumulate(d32, s, one, sum, sumRest);
        auto rest = hn::Zero(d32);
        const auto pair = hn::ReorderWidenMulAccumulate(d32, s, s, hn::Zero(d32), rest);
        squares = hn::Add(squares, hn::Add(Widened(d64, pair), Widened(d64, rest)));
    }
    const i64 distances = hn::GetLane(hn::SumOfLanes(d32, hn::Add(sum, sumRest)));
    const i64 distanceSquares = static_cast<i64>(hn::GetLane(hn::SumOfLanes(d64, squares)));
    SExactFigures<u16> found{hn::GetLane(hn::MinOfLanes(d, minimum)), hn::GetLane(hn::MaxOfLanes(d, maximum)),
                             distances + (i64{i} << 15),
                             static_cast<u64>(distanceSquares + distances * (1 << 16) + (i64{i} << 30))};
    found.Include(pixels + i, count - i);
    return found;
}

#endif

u32 FindFirst(const u16* pixels, u32 count, u16 value) {
    return static_cast<u32>(hn::Find(hn::ScalableTag<u16>(), value, pixels, count));
}

u32 CollectChosen(const u32* pixels, const u8* chosen, u32 count, u32* out) {
    const hn::ScalableTag<u32> d;
    const hn::Rebind<u8, decltype(d)> bytes;
    u32 i = 0, n = 0;
    for (; i + hn::Lanes(d) <= count; i += static_cast<u32>(hn::Lanes(d))) {
        const auto taken = hn::Ne(hn::PromoteTo(d, hn::LoadU(bytes, chosen + i)), hn::Zero(d));
        // Compressed in a register: storing while compressing is very slow on some processors.
        hn::StoreU(hn::Compress(hn::LoadU(d, pixels + i), taken), d, out + n);
        n += static_cast<u32>(hn::CountTrue(d, taken));
    }
    for (; i < count; ++i) {
        out[n] = pixels[i];
        n += chosen[i] ? 1 : 0;
    }
    return n;
}

u32 FillOtherPixels(const u16* pixels, const u8* chosen, u32 count, u16 fill, u16* out) {
    const hn::ScalableTag<u16> d;
    const hn::Rebind<u8, decltype(d)> bytes;
    const auto filling = hn::Set(d, fill);
    u32 i = 0, n = 0;
    for (; i + hn::Lanes(d) <= count; i += static_cast<u32>(hn::Lanes(d))) {
        const auto taken = hn::Ne(hn::PromoteTo(d, hn::LoadU(bytes, chosen + i)), hn::Zero(d));
        hn::StoreU(hn::IfThenElse(taken, hn::LoadU(d, pixels + i), filling), d, out + i);
        n += static_cast<u32>(hn::CountTrue(d, taken));
    }
    for (; i < count; ++i) {
        out[i] = chosen[i] ? pixels[i] : fill;
        n += chosen[i] ? 1 : 0;
    }
    return n;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace ovix::reduce::simd
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(Measure);
HWY_EXPORT(FindFirst);
HWY_EXPORT(CollectChosen);
HWY_EXPORT(FillOtherPixels);

SExactFigures<u16> MeasureUInt16(const u16* pixels, u32 count) { return HWY_DYNAMIC_DISPATCH(Measure)(pixels, count); }

u32 FindUInt16(const u16* pixels, u32 count, u16 value) {
    return HWY_DYNAMIC_DISPATCH(FindFirst)(pixels, count, value);
}

u32 Collect(const u32* pixels, const u8* chosen, u32 count, u32* out) {
    return HWY_DYNAMIC_DISPATCH(CollectChosen)(pixels, chosen, count, out);
}

u32 FillOthers(const u16* pixels, const u8* chosen, u32 count, u16 fill, u16* out) {
    return HWY_DYNAMIC_DISPATCH(FillOtherPixels)(pixels, chosen, count, fill, out);
}

}  // namespace ovix::reduce::simd
#endif
