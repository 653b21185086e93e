#include "reduce/pixels/simd/merge_simd.h"

#include "reduce/pixels/formulas.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/merge_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/highway.h>
//
#include "reduce/pixels/simd/fitting-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

/// Below this, whole numbers and their sums with an offset are exact in single precision.
constexpr float kExact = 4194304.0f;

/// Half away from zero, for values below `kExact`.
HWY_INLINE hn::Vec<DInt> RoundFitting(VFloat value) {
    const auto whole = TruncateFitting(value);
    const auto fraction = hn::Sub(value, hn::ConvertTo(DFloat(), whole));
    const auto half = hn::Set(DFloat(), 0.5f);
    const auto up = hn::VecFromMask(DInt(), hn::RebindMask(DInt(), hn::Ge(fraction, half)));
    const auto down = hn::VecFromMask(DInt(), hn::RebindMask(DInt(), hn::Le(fraction, hn::Neg(half))));
    return hn::Add(hn::Sub(whole, up), down);
}

/// False, with nothing stored, when a value is too large: those are left to the plain formula.
template <SMergeTerms kTerms>
HWY_INLINE bool MergeVector(const u16* x, const float* gain, const i16* offset, u16* dest, VFloat low, VFloat high) {
    VFloat value = LoadFloats(x);
    if constexpr (kTerms.gain) value = hn::Mul(value, LoadFloats(gain));
    if constexpr (kTerms.offset && kTerms.clip) value = hn::Add(value, LoadFloats(offset));
    const VFloat limited = kTerms.clip ? LimitFloats(value, low, high) : value;
    if (!FitsAll(limited, kExact)) return false;
    auto whole = kTerms.gain ? RoundFitting(limited) : TruncateFitting(limited);
    if constexpr (kTerms.gain && kTerms.clip) {
        const auto kept = hn::RebindMask(DInt(), hn::Eq(limited, value));
        whole = hn::IfThenElse(kept, whole, TruncateFitting(limited));
    }
    if constexpr (kTerms.offset && !kTerms.clip) whole = hn::Add(whole, LoadInts(offset));
    StoreLow16(whole, dest);
    return true;
}

template <SMergeTerms kTerms>
void MergeAs(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
             const TLimits<float>* limitsOrNull) {
    const TLimits<float> limits = limitsOrNull ? *limitsOrNull : TLimits<float>{};
    const auto low = hn::Set(DFloat(), limits.low), high = hn::Set(DFloat(), limits.high);
    const auto plain = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            dest[i] = MergeCount<kTerms>(x[i], kTerms.gain ? gain[i] : 0, kTerms.offset ? offset[i] : i16{0}, limits);
        }
    };
    const std::size_t lanes = hn::Lanes(DFloat());
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const bool stored = MergeVector<kTerms>(x + i, kTerms.gain ? gain + i : nullptr,
                                                kTerms.offset ? offset + i : nullptr, dest + i, low, high);
        if (HWY_UNLIKELY(!stored)) plain(i, i + lanes);
    }
    plain(i, count);
}

void CorrectForMerge(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
                     const TLimits<float>* limits) {
    const auto run = [&]<SMergeTerms kTerms>() { MergeAs<kTerms>(x, gain, offset, dest, count, limits); };
    if (gain && offset) {
        limits ? run.template operator()<SMergeTerms{true, true, true}>()
               : run.template operator()<SMergeTerms{true, true, false}>();
    } else if (gain) {
        limits ? run.template operator()<SMergeTerms{true, false, true}>()
               : run.template operator()<SMergeTerms{true, false, false}>();
    } else if (offset) {
        limits ? run.template operator()<SMergeTerms{false, true, true}>()
               : run.template operator()<SMergeTerms{false, true, false}>();
    } else {
        limits ? run.template operator()<SMergeTerms{false, false, true}>()
               : run.template operator()<SMergeTerms{false, false, false}>();
    }
}

template <bool kFirst, bool kFromLast, class T>
bool TakeAs(const T* corrected, const SMergeStep& step, T* values, u8* status, std::size_t count) {
    using D = hn::ScalableTag<T>;
    const D d;
    const hn::RebindToUnsigned<D> wide;
    const hn::Rebind<u8, D> bytes;
    using Wide = hn::TFromD<decltype(wide)>;
    const T threshold = static_cast<T>(step.threshold);
    const u8 failedStatus = step.last ? step.preset : static_cast<u8>(step.preset | kPending);
    const auto limit = hn::Set(d, threshold);
    const auto passed = hn::Set(wide, Wide{step.preset}), failed = hn::Set(wide, Wide{failedStatus});
    auto seen = hn::Zero(wide);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto c = hn::LoadU(d, corrected + i);
        const auto fails = hn::RebindMask(wide, kFromLast ? hn::Lt(c, limit) : hn::Gt(c, limit));
        auto state = hn::IfThenElse(fails, failed, passed);
        auto value = c;
        if constexpr (!kFirst) {
            const auto before = hn::PromoteTo(wide, hn::LoadU(bytes, status + i));
            const auto pending = hn::Gt(before, hn::Set(wide, Wide{kPending - 1}));
            state = hn::IfThenElse(pending, state, before);
            value = hn::IfThenElse(hn::RebindMask(d, pending), c, hn::LoadU(d, values + i));
        }
        seen = hn::Or(seen, state);
        hn::StoreU(value, d, values + i);
        hn::StoreU(hn::TruncateTo(bytes, state), bytes, status + i);
    }
    bool pending = !hn::AllTrue(wide, hn::Lt(seen, hn::Set(wide, Wide{kPending})));
    for (; i < count; ++i) {
        if (!kFirst && !(status[i] & kPending)) continue;
        const bool fails = kFromLast ? corrected[i] < threshold : corrected[i] > threshold;
        values[i] = corrected[i];
        status[i] = fails ? failedStatus : step.preset;
        pending |= (status[i] & kPending) != 0;
    }
    return pending;
}

template <class T>
bool TakeAny(const T* corrected, const SMergeStep& step, T* values, u8* status, std::size_t count) {
    if (step.first && step.fromLast) return TakeAs<true, true>(corrected, step, values, status, count);
    if (step.first) return TakeAs<true, false>(corrected, step, values, status, count);
    if (step.fromLast) return TakeAs<false, true>(corrected, step, values, status, count);
    return TakeAs<false, false>(corrected, step, values, status, count);
}

bool TakePendingCounts(const u16* corrected, const SMergeStep& step, u16* values, u8* status, std::size_t count) {
    return TakeAny(corrected, step, values, status, count);
}
bool TakePendingFloats(const float* corrected, const SMergeStep& step, float* values, u8* status, std::size_t count) {
    return TakeAny(corrected, step, values, status, count);
}

bool AnyPending(const u8* status, std::size_t count) {
    const hn::ScalableTag<u8> d;
    auto seen = hn::Zero(d);
    u8 rest = 0;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) seen = hn::Or(seen, hn::LoadU(d, status + i));
    for (; i < count; ++i) rest |= status[i];
    return (rest & kPending) || !hn::AllTrue(d, hn::Lt(seen, hn::Set(d, kPending)));
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(CorrectForMerge);
HWY_EXPORT(TakePendingCounts);
HWY_EXPORT(TakePendingFloats);
HWY_EXPORT(AnyPending);

void CorrectForMerge(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
                     const TLimits<float>* limits) {
    HWY_DYNAMIC_DISPATCH(CorrectForMerge)(x, gain, offset, dest, count, limits);
}
bool TakePending(const u16* corrected, const SMergeStep& step, u16* values, u8* status, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(TakePendingCounts)(corrected, step, values, status, count);
}
bool TakePending(const float* corrected, const SMergeStep& step, float* values, u8* status, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(TakePendingFloats)(corrected, step, values, status, count);
}

bool AnyPending(const u8* status, std::size_t count) { return HWY_DYNAMIC_DISPATCH(AnyPending)(status, count); }

}  // namespace ovix::reduce::simd
#endif
