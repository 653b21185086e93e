#include "reduce/pixels/stats_tally.h"

#include <algorithm>

#include "core/visit.h"
#include "reduce/pixels/selection.h"
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
void AddSerially(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    if (count == 0) return;
    SExtremes extremes = tally.valid;
    if (!extremes.any) extremes.Begin(static_cast<double>(pixels[0]), places.At(0));
    double sum = tally.sum;
    double squares = tally.squares;
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        extremes.Raise(v, places, i);
        extremes.Lower(v, places, i);
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
void AddExactly(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kExactBlock, count - at);
        const T* block = pixels + at;
        const SPlaces here = places.From(at);
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

template <class T>
void AddCounted(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    if constexpr (kNarrow<T>) {
        AddExactly(tally, pixels, count, places);
    } else {
        AddSerially(tally, pixels, count, places);
    }
}

u8 UnionOf(const u8* status, u32 count) {
    u8 all = 0;
    for (u32 i = 0; i < count; ++i) all |= status[i];
    return all;
}

/// Pixels that all count, with their status.
template <class T>
void AddCounted(STally& tally, const T* pixels, const u8* status, u32 count, const SPlaces& places) {
    const SExtremes before = tally.valid;
    SExtremes& valid = tally.valid;
    AddCounted(tally, pixels, count, SPlaces{0});  // new extremes then stand at a place in the status
    if (!before.any || valid.minimum < before.minimum) {
        tally.minimumStatus = status[valid.minimumIndex];
        valid.minimumIndex = places.At(valid.minimumIndex);
    }
    if (!before.any || valid.maximum > before.maximum) {
        tally.maximumStatus = status[valid.maximumIndex];
        valid.maximumIndex = places.At(valid.maximumIndex);
    }
    tally.statusUnion |= UnionOf(status, count);
}

template <class T>
void WidenAll(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    SExtremes all = tally.All();
    if (!all.any) all.Begin(static_cast<double>(pixels[0]), places.At(0));
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        all.Raise(v, places, i);
        all.Lower(v, places, i);
    }
    tally.all = all;
    tally.apart = true;
}

/// A block of at most `kRunBlock` pixels, some of which may not count: the others are put together and added.
template <class T>
void AddBlock(STally& tally, const T* pixels, const u8* status, u32 count, const SPlaces& places) {
    const bool allCount = IsCounted(UnionOf(status, count));
    if (tally.apart || !allCount) WidenAll(tally, pixels, count, places);
    if (allCount) return AddCounted(tally, pixels, status, count, places);
    T counted[kRunBlock];
    u8 countedStatus[kRunBlock];
    u32 indices[kRunBlock];
    u32 n = 0;
    for (u32 i = 0; i < count; ++i) {
        counted[n] = pixels[i];
        countedStatus[n] = status[i];
        indices[n] = places.At(i);
        n += IsCounted(status[i]) ? 1 : 0;
    }
    if (n) AddCounted(tally, counted, countedStatus, n, SPlaces{0, indices});
}

}  // namespace

void AddPixels(STally& tally, STypedData pixels, const u8* status, u32 count, const SPlaces& places) {
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* first = static_cast<const T*>(pixels.data);
        if (!status) return AddCounted(tally, first, count, places);
        for (u32 at = 0; at < count; at += kRunBlock) {
            AddBlock(tally, first + at, status + at, std::min(kRunBlock, count - at), places.From(at));
        }
    });
}

}  // namespace ovix::reduce
