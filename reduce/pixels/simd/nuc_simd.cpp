#include "reduce/pixels/simd/nuc_simd.h"

#include "core/visit.h"
#include "reduce/pixels/formulas.h"

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

/// What a correction does besides with pixels that it has just stored.
struct SNothingElse {
    HWY_INLINE void Vector(std::size_t) const {}
    HWY_INLINE void Rest(std::size_t, std::size_t) const {}
};

template <bool kOffset, bool kClip, class S, class D, class Besides = SNothingElse>
void CorrectAs(const S* x, const float* gain, const i16* offset, D* dest, std::size_t count, const TLimits<D>& limits,
               Besides besides = {}) {
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
        besides.Vector(i);
    }
    plain(i, count);
    besides.Rest(i, count);
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

using DPlace = hn::ScalableTag<u32>;
using VPlace = hn::Vec<DPlace>;

/// Notes those of a register's places whose entry in the map differs from where they are.
HWY_INLINE void NoteMoved(VPlace places, VPlace difference, SMovedPixels& moved) {
    // Compressed in a register: storing while compressing is very slow on some processors.
    const auto differs = hn::Ne(difference, hn::Zero(DPlace()));
    hn::StoreU(hn::Compress(places, differs), DPlace(), moved.places + moved.count);
    moved.count += static_cast<u32>(hn::CountTrue(DPlace(), differs));
}

/// Nearly all pixels stay where they are, so four registers at a time are tested as one.
void FindMoved(const u32* map, u32 first, u32 count, SMovedPixels& moved) {
    const DPlace d;
    const u32 lanes = static_cast<u32>(hn::Lanes(d));
    const auto base = hn::Set(d, first), step = hn::Set(d, lanes), step4 = hn::Set(d, 4 * lanes);
    auto place = hn::Iota(d, 0);
    u32 i = 0;
    moved.count = 0;
    const auto differences = [&](u32 at, VPlace places)
                                 HWY_ATTR { return hn::Xor(hn::LoadU(d, map + at), hn::Add(places, base)); };
    for (; i + 4 * lanes <= count; i += 4 * lanes, place = hn::Add(place, step4)) {
        const auto place1 = hn::Add(place, step), place2 = hn::Add(place1, step), place3 = hn::Add(place2, step);
        const auto all = hn::Or(hn::Or(differences(i, place), differences(i + lanes, place1)),
                                hn::Or(differences(i + 2 * lanes, place2), differences(i + 3 * lanes, place3)));
        if (HWY_LIKELY(hn::AllTrue(d, hn::Eq(all, hn::Zero(d))))) continue;
        auto here = place;
        for (u32 at = i; at < i + 4 * lanes; at += lanes, here = hn::Add(here, step)) {
            NoteMoved(here, differences(at, here), moved);
        }
    }
    for (; i < count; ++i) {
        if (map[i] != first + i) moved.places[moved.count++] = i;
    }
}

/// Fetches the entries of a table at the places that were stored, and notes the pixels that the map moves.
struct SFetchBesides {
    SCountLook look;
    const u16* places;
    float* values;
    SMovedPixels& moved;

    HWY_INLINE void Vector(std::size_t i) const {
        const hn::CappedTag<float, 8> d;  // as `GatherValues` has it
        for (std::size_t k = i; k < i + hn::Lanes(DPlace()); k += hn::Lanes(d)) {
            const auto at =
                hn::PromoteTo(hn::RebindToSigned<decltype(d)>(), hn::LoadU(hn::Rebind<u16, decltype(d)>(), places + k));
            hn::StoreU(hn::GatherIndex(d, look.table, at), d, values + k);
        }
        if (!look.map) return;
        const DPlace dp;
        const auto here = hn::Add(hn::Iota(dp, 0), hn::Set(dp, static_cast<u32>(i)));
        const auto difference = hn::Xor(hn::LoadU(dp, look.map + i), hn::Add(here, hn::Set(dp, look.first)));
        if (HWY_LIKELY(hn::AllTrue(dp, hn::Eq(difference, hn::Zero(dp))))) return;
        NoteMoved(here, difference, moved);
    }
    HWY_INLINE void Rest(std::size_t from, std::size_t to) const {
        for (std::size_t i = from; i < to; ++i) {
            values[i] = look.table[places[i]];
            if (look.map && look.map[i] != look.first + i) moved.places[moved.count++] = static_cast<u32>(i);
        }
    }
};

void CorrectAndFetch(const SCountLook& look, u16* places, float* values, u32 count, SMovedPixels& moved) {
    moved.count = 0;
    const SFetchBesides fetch{look, places, values, moved};
    if (look.offset) {
        CorrectAs<true, true>(look.counts, look.gain, look.offset, places, count, look.limits, fetch);
    } else {
        CorrectAs<false, true>(look.counts, look.gain, look.offset, places, count, look.limits, fetch);
    }
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(CountsToCounts);
HWY_EXPORT(CountsToFloats);
HWY_EXPORT(FloatsToFloats);
HWY_EXPORT(FindMoved);
HWY_EXPORT(CorrectAndFetch);

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

void FindMoved(const u32* map, u32 first, u32 count, SMovedPixels& moved) {
    HWY_DYNAMIC_DISPATCH(FindMoved)(map, first, count, moved);
}

void CorrectAndFetch(const SCountLook& look, u16* places, float* values, u32 count, SMovedPixels& moved) {
    HWY_DYNAMIC_DISPATCH(CorrectAndFetch)(look, places, values, count, moved);
}

}  // namespace ovix::reduce::simd
#endif
