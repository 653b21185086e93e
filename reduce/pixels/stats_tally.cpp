#include "reduce/pixels/stats_tally.h"

#include <algorithm>

#include "core/visit.h"
#include "reduce/pixels/simd/stats_u16.h"
#include "reduce/pixels/stats.h"

namespace ovix::reduce {

namespace {

/// Types whose sums are worth making in integers.
template <class T>
constexpr bool kNarrow = std::is_integral_v<T> && sizeof(T) <= 2;

/// Pixels whose integer sums are made at once; the block is still in cache for a second look.
constexpr u32 kExactBlock = simd::kMostPixels;

/// Below 2^53 every integer is a double. Neither a sum of integers nor a part of it is larger than the sum of their
/// squares; so while that is below the bound, no addition of the serial sums rounds, and any order gives their bits.
constexpr double kExactBound = 9007199254740992.0;

template <class T>
SExactFigures<T> Measure(const T* pixels, u32 count) {
    if constexpr (std::is_same_v<T, u16>) {
        return simd::MeasureUInt16(pixels, count);
    } else {
        SExactFigures<T> found{pixels[0], pixels[0], 0, 0};
        found.Include(pixels, count);
        return found;
    }
}

template <class T>
u32 FindFirst(const T* pixels, u32 count, T value) {
    if constexpr (std::is_same_v<T, u16>) {
        return simd::FindUInt16(pixels, count, value);
    } else {
        return static_cast<u32>(std::find(pixels, pixels + count, value) - pixels);
    }
}

/// The plain path: one pixel after the other, in double.
template <class T>
void AddSerially(STally& tally, const T* pixels, u32 count, SPlaces places) {
    if (count == 0) return;
    SExtremes extremes = tally.valid;
    if (!extremes.any) {
        const double first = static_cast<double>(pixels[0]);
        extremes = {first, first, places.At(0), places.At(0), true};
    }
    double sum = tally.sum;
    double squares = tally.squares;
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        if (v > extremes.maximum) {
            extremes.maximum = v;
            extremes.maximumIndex = places.At(i);
        }
        if (v < extremes.minimum) {
            extremes.minimum = v;
            extremes.minimumIndex = places.At(i);
        }
        sum += v;
        squares += v * v;
    }
    tally.valid = extremes;
    tally.sum = sum;
    tally.squares = squares;
    tally.count += count;
}

/// The same result in blocks of integer sums, as far as these are exact.
template <class T>
void AddExactly(STally& tally, const T* pixels, u32 count, SPlaces places) {
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kExactBlock, count - at);
        const T* block = pixels + at;
        const SPlaces here{places.first + at, places.list ? places.list + at : nullptr};
        const SExactFigures<T> found = Measure(block, n);
        const double squares = tally.squares + static_cast<double>(found.squares);
        if (squares >= kExactBound) {
            AddSerially(tally, block, n, here);
            continue;
        }
        SExtremes& extremes = tally.valid;
        if (!extremes.any || found.minimum < extremes.minimum) {
            extremes.minimum = found.minimum;
            extremes.minimumIndex = here.At(FindFirst(block, n, found.minimum));
        }
        if (!extremes.any || found.maximum > extremes.maximum) {
            extremes.maximum = found.maximum;
            extremes.maximumIndex = here.At(FindFirst(block, n, found.maximum));
        }
        extremes.any = true;
        tally.sum += static_cast<double>(found.sum);
        tally.squares = squares;
        tally.count += n;
    }
}

/// True bits: 1 where v became the minimum, 2 where it became the maximum.
unsigned Widen(SExtremes& extremes, double v, u32 index) {
    unsigned changed = 0;
    if (!extremes.any || v < extremes.minimum) {
        extremes.minimum = v;
        extremes.minimumIndex = index;
        changed |= 1;
    }
    if (!extremes.any || v > extremes.maximum) {
        extremes.maximum = v;
        extremes.maximumIndex = index;
        changed |= 2;
    }
    extremes.any = true;
    return changed;
}

template <class T>
void AddWithStatus(STally& tally, const T* pixels, const u8* status, u32 count, SPlaces places) {
    STally t = tally;  // a copy that the compiler can hold in registers
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        const u32 index = places.At(i);
        Widen(t.all, v, index);
        if (!IsCounted(status[i])) continue;
        t.statusUnion |= status[i];
        const unsigned changed = Widen(t.valid, v, index);
        if (changed & 1) t.minimumStatus = status[i];
        if (changed & 2) t.maximumStatus = status[i];
        t.sum += v;
        t.squares += v * v;
        ++t.count;
    }
    tally = t;
}

}  // namespace

void AddPixels(STally& tally, STypedData pixels, const u8* status, u32 count, SPlaces places) {
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* first = static_cast<const T*>(pixels.data);
        if (status) {
            AddWithStatus(tally, first, status, count, places);
        } else if constexpr (kNarrow<T>) {
            AddExactly(tally, first, count, places);
        } else {
            AddSerially(tally, first, count, places);
        }
    });
}

}  // namespace ovix::reduce
