#include "reduce/pixels/simd/nuc_simd.h"

#include "core/numeric_cast.h"
#include "reduce/pixels/nuc_formula.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/nuc_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/highway.h>
//
#include "reduce/pixels/simd/fitting-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

/// The limits of a clip as registers of the type that it is done in; `D` is the destination's.
template <class V, class D>
struct SVectorLimits {
    V low, high;
};
HWY_INLINE auto Broadcast(const TLimits<float>& limits) {
    return SVectorLimits<VFloat, float>{hn::Set(DFloat(), limits.low), hn::Set(DFloat(), limits.high)};
}
HWY_INLINE auto Broadcast(const TLimits<u16>& limits) {
    return SVectorLimits<VInt, u16>{hn::Set(DInt(), limits.low), hn::Set(DInt(), limits.high)};
}

template <bool kClip>
HWY_INLINE bool Store(VFloat value, float* dest, const SVectorLimits<VFloat, float>& limits) {
    hn::StoreU(kClip ? LimitFloats(value, limits.low, limits.high) : value, DFloat(), dest);
    return true;
}

/// False, with nothing stored, when a value does not fit 32 bits: those are left to the plain formula.
template <bool kClip>
HWY_INLINE bool Store(VFloat value, u16* dest, const SVectorLimits<VInt, u16>& limits) {
    if (HWY_UNLIKELY(!FitsAll(value, 2147483648.0f))) return false;
    VInt whole = TruncateFitting(value);
    // The limits are for what is left of a value in 16 bits.
    if (kClip) whole = hn::Min(hn::Max(hn::And(whole, hn::Set(DInt(), 0xFFFF)), limits.low), limits.high);
    StoreLow16(whole, dest);
    return true;
}

template <bool kOffset, bool kClip, class S, class D>
void CorrectAs(const S* x, const float* gain, const i16* offset, D* dest, std::size_t count, const TLimits<D>& limits) {
    const std::size_t lanes = hn::Lanes(DFloat());
    const auto vectorLimits = Broadcast(limits);
    const auto plain = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            const float value = kOffset ? NucGainOffset(x[i], gain[i], offset[i]) : NucGain(x[i], gain[i]);
            dest[i] = NumericCast<D>(value);
            if (kClip) dest[i] = limits(dest[i]);
        }
    };
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        VFloat value = hn::Mul(LoadFloats(x + i), LoadFloats(gain + i));
        if constexpr (kOffset) value = hn::Add(value, LoadFloats(offset + i));
        if (!Store<kClip>(value, dest + i, vectorLimits)) plain(i, i + lanes);
    }
    plain(i, count);
}

template <class S, class D>
void CorrectAny(const S* x, const float* gain, const i16* offset, D* dest, std::size_t count,
                const TLimits<D>* limits) {
    if (offset && limits) return CorrectAs<true, true>(x, gain, offset, dest, count, *limits);
    if (offset) return CorrectAs<true, false>(x, gain, offset, dest, count, TLimits<D>{});
    if (limits) return CorrectAs<false, true>(x, gain, offset, dest, count, *limits);
    CorrectAs<false, false>(x, gain, offset, dest, count, TLimits<D>{});
}

void CountsToCounts(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
                    const TLimits<u16>* limits) {
    CorrectAny(x, gain, offset, dest, count, limits);
}
void CountsToFloats(const u16* x, const float* gain, const i16* offset, float* dest, std::size_t count,
                    const TLimits<float>* limits) {
    CorrectAny(x, gain, offset, dest, count, limits);
}
void FloatsToFloats(const float* x, const float* gain, const i16* offset, float* dest, std::size_t count,
                    const TLimits<float>* limits) {
    CorrectAny(x, gain, offset, dest, count, limits);
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(CountsToCounts);
HWY_EXPORT(CountsToFloats);
HWY_EXPORT(FloatsToFloats);

void Correct(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
             const TLimits<u16>* limits) {
    HWY_DYNAMIC_DISPATCH(CountsToCounts)(x, gain, offset, dest, count, limits);
}
void Correct(const u16* x, const float* gain, const i16* offset, float* dest, std::size_t count,
             const TLimits<float>* limits) {
    HWY_DYNAMIC_DISPATCH(CountsToFloats)(x, gain, offset, dest, count, limits);
}
void Correct(const float* x, const float* gain, const i16* offset, float* dest, std::size_t count,
             const TLimits<float>* limits) {
    HWY_DYNAMIC_DISPATCH(FloatsToFloats)(x, gain, offset, dest, count, limits);
}

}  // namespace ovix::reduce::simd
#endif
