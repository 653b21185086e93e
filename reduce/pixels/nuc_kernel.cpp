#include "reduce/pixels/nuc_kernel.h"

#include <algorithm>
#include <cstring>

#include "core/visit.h"
#include "reduce/pixels/formulas.h"
#include "reduce/pixels/simd/nuc_simd.h"

namespace ovix::reduce {

namespace {

using SResult = CNucCorrector::SResult;

template <class T>
T Load(const void* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <class W, class F>
SResult Compute(void* room, std::size_t count, F&& f) {
    W* results = static_cast<W*>(room);
    for (std::size_t i = 0; i < count; ++i) results[i] = f(i);
    return {results, DataTypeOf<W>()};
}

template <class S>
SResult Formula(const void* pixels, const float* gain, const i16* offset, void* room, std::size_t count) {
    const S* x = static_cast<const S*>(pixels);
    using W = TNucFloat<S>;
    if (gain && offset) return Compute<W>(room, count, [=](auto i) { return NucGainOffset(x[i], gain[i], offset[i]); });
    if (gain) return Compute<W>(room, count, [=](auto i) { return NucGain(x[i], gain[i]); });
    if (offset) {
        using Sum = decltype(NucOffset(S{}, i16{}));
        return Compute<Sum>(room, count, [=](auto i) { return NucOffset(x[i], offset[i]); });
    }
    return {x, DataTypeOf<S>()};
}

template <class D>
void Clip(void* dest, std::size_t count, const void* low, const void* high) {
    const TLimits<D> limits{Load<D>(low), Load<D>(high)};
    D* values = static_cast<D*>(dest);
    for (std::size_t i = 0; i < count; ++i) values[i] = limits(values[i]);
}

template <class S, class D>
void Fused(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count, const void* low,
           const void* high) {
    const TLimits<D> limits = low ? TLimits<D>{Load<D>(low), Load<D>(high)} : TLimits<D>{};
    simd::Correct(static_cast<const S*>(x), gain, offset, static_cast<D*>(dest), count, low ? &limits : nullptr);
}

}  // namespace

CNucCorrector::CNucCorrector(EDataType source, EDataType dest, bool clip, double minimum, double maximum)
    : source_(source), dest_(dest) {
    if (!IsNumeric(source) || !IsNumeric(dest) || source == UInt64 || dest == UInt64) return;
    Visit(source, [&]<class S>(TElement<S>) { formula_ = &Formula<S>; });
    if (clip) Visit(dest, [&]<class D>(TElement<D>) { clip_ = &Clip<D>; });
    if (source == UInt16 && dest == Flt32) fused_ = &Fused<u16, float>;
    if (source == Flt32 && dest == Flt32) fused_ = &Fused<float, float>;
    const FConvertSpan narrow = ConvertSpanFunction(Flt64, dest);
    narrow(&minimum, low_, 1);
    narrow(&maximum, high_, 1);
    if (source == UInt16 && dest == UInt16) {
        const bool crossed = clip && Load<u16>(low_) > Load<u16>(high_);
        if (!crossed) fused_ = &Fused<u16, u16>;
    }
}

std::optional<TLimits<u16>> CNucCorrector::LimitsOfCounts() const {
    if (fused_ != &Fused<u16, u16>) return {};
    return clip_ ? TLimits<u16>{Load<u16>(low_), Load<u16>(high_)} : TLimits<u16>{0, 65535};
}

void CNucCorrector::operator()(const void* x, const float* gain, const i16* offset, void* dest,
                               std::size_t count) const {
    if (fused_ && gain) {
        fused_(x, gain, offset, dest, count, clip_ ? low_ : nullptr, high_);
        return;
    }
    const std::size_t from = ElementSize(source_), to = ElementSize(dest_);
    for (std::size_t at = 0; at < count; at += kBlock) {
        alignas(64) u8 room[kBlock * 8];
        const std::size_t n = std::min(kBlock, count - at);
        const SResult result = formula_(static_cast<const u8*>(x) + at * from, gain ? gain + at : nullptr,
                                        offset ? offset + at : nullptr, room, n);
        u8* out = static_cast<u8*>(dest) + at * to;
        ConvertSpanFunction(result.type, dest_)(result.data, out, n);
        // The limits are compared after the cast: what has wrapped in it is limited as it is.
        if (clip_) clip_(out, n, low_, high_);
    }
}

}  // namespace ovix::reduce
