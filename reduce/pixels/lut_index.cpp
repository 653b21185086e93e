#include "reduce/pixels/lut_index.h"

#include "core/visit.h"
#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

namespace {

template <class S>
const u16* FindPlaces(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const S* x = static_cast<const S*>(pixels);
    for (std::size_t i = 0; i < count; ++i) places[i] = LutIndex(static_cast<float>(x[i]), lower, upper);
    return places;
}

template <>
const u16* FindPlaces<u16>(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    const u16* x = static_cast<const u16*>(pixels);
    if (lower == 0 && upper == 65535) return x;
    simd::LimitToPlaces(x, places, count, lower, upper);
    return places;
}

template <>
const u16* FindPlaces<float>(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper) {
    simd::RoundToPlaces(static_cast<const float*>(pixels), places, count, lower, upper);
    return places;
}

}  // namespace

FLutIndexSpan LutIndexFunction(EDataType type) {
    FLutIndexSpan function = nullptr;
    Visit(type, [&]<class S>(TElement<S>) { function = &FindPlaces<S>; });
    return function;
}

}  // namespace ovix::reduce
