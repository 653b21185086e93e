// What the correction kernels share: loads as single precision, and conversions of values that are known to fit.
// Included once for each processor target.

#if defined(OVIX_FITTING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OVIX_FITTING_INL_H
#undef OVIX_FITTING_INL_H
#else
#define OVIX_FITTING_INL_H
#endif

#include <hwy/highway.h>

#include "core/types.h"

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using DFloat = hn::ScalableTag<float>;
using VFloat = hn::Vec<DFloat>;
using DInt = hn::RebindToSigned<DFloat>;
using VInt = hn::Vec<DInt>;

template <class T>
HWY_INLINE VInt LoadInts(const T* x) {
    return hn::PromoteTo(DInt(), hn::LoadU(hn::Rebind<T, DFloat>(), x));
}
HWY_INLINE VFloat LoadFloats(const float* x) { return hn::LoadU(DFloat(), x); }
template <class T>
HWY_INLINE VFloat LoadFloats(const T* x) {
    return hn::ConvertTo(DFloat(), LoadInts(x));
}

/// `TLimits`: the low limit is tested first, a NaN passes.
HWY_INLINE VFloat LimitFloats(VFloat value, VFloat low, VFloat high) {
    const auto over = hn::Gt(value, high), under = hn::Lt(value, low);
    return hn::IfThenElse(under, low, hn::IfThenElse(over, high, value));
}

/// Whether all absolute values are below `limit`; a NaN is not.
HWY_INLINE bool FitsAll(VFloat value, float limit) {
    const DFloat d;
    return hn::AllTrue(d, hn::Lt(hn::Abs(value), hn::Set(d, limit)));
}

/// Truncates values that are known to fit; what `ConvertTo` does for those that do not takes longer than all the rest.
HWY_INLINE VInt TruncateFitting(VFloat value) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return {_mm512_cvttps_epi32(value.raw)};
#elif HWY_TARGET == HWY_AVX2
    return {_mm256_cvttps_epi32(value.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    return {_mm_cvttps_epi32(value.raw)};
#else
    return hn::ConvertTo(DInt(), value);
#endif
}

HWY_INLINE void StoreLow16(VInt value, u16* dest) {
    const hn::Rebind<u16, DFloat> narrow;
    hn::StoreU(hn::TruncateTo(narrow, hn::BitCast(hn::RebindToUnsigned<DInt>(), value)), narrow, dest);
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
