#include "reduce/pixels/stats_tally.h"

#include <bit>
#include <cstring>

#include "core/visit.h"
#include "reduce/pixels/simd/stats_simd.h"
#include "reduce/pixels/stats.h"

namespace ovix::reduce {

namespace {

using simd::SExactFigures;

/// Types whose sums are worth making in integers.
template <class T>
constexpr bool kNarrow = std::is_integral_v<T> && sizeof(T) <= 2;

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
    if constexpr (std::is_same_v<T, u16>) return simd::FindUInt16(pixels, count, value);
    if constexpr (std::is_same_v<T, float>) return simd::FindFloat(pixels, count, value);
    return static_cast<u32>(std::find(pixels, pixels + count, value) - pixels);
}

/// Takes a block by its least and its greatest pixel.
template <class T>
void Widen(SExtremes& extremes, const T* pixels, u32 count, T least, T greatest, const SPlaces& places) {
    const double first = static_cast<double>(pixels[0]);
    if (!extremes.any) extremes = {first, first, places.At(0), places.At(0), true};
    if (static_cast<double>(least) < extremes.minimum) {
        const u32 place = FindFirst(pixels, count, least);
        extremes.minimum = static_cast<double>(pixels[place]);
        extremes.minimumIndex = places.At(place);
    }
    if (static_cast<double>(greatest) > extremes.maximum) {
        const u32 place = FindFirst(pixels, count, greatest);
        extremes.maximum = static_cast<double>(pixels[place]);
        extremes.maximumIndex = places.At(place);
    }
}

/// The plain form: one pixel after the other.
template <class T>
void Widen(SExtremes& extremes, const T* pixels, u32 count, const SPlaces& places) {
    const double first = static_cast<double>(pixels[0]);
    if (!extremes.any) extremes = {first, first, places.At(0), places.At(0), true};
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        if (v > extremes.maximum) extremes.maximum = v, extremes.maximumIndex = places.At(i);
        if (v < extremes.minimum) extremes.minimum = v, extremes.minimumIndex = places.At(i);
    }
}

/// The sums of pixels of 64 bits and of those of 32 that are no floats, which round in ways of their own.
template <class T>
void AddSerially(simd::SSums& sums, const T* pixels, u32 count) {
    double values = sums.values, squares = sums.squares;
    for (u32 i = 0; i < count; ++i) {
        const double v = static_cast<double>(pixels[i]);
        values += v;
        squares += v * v;
    }
    sums.values = values;
    sums.squares = squares;
}

/// Counts whose sums are no longer exact have the sums of the same floats.
template <class T>
void AddAsFloats(simd::SSums& sums, const T* pixels, u32 count) {
    float floats[simd::kFloatBlock];
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(simd::kFloatBlock, count - at);
        std::copy_n(pixels + at, n, floats);
        sums.Add(floats, n, simd::MeasureFloats(floats, n));
    }
}

/// `count` pixels that all count, at most `kMostPixels`.
template <class T>
void AddCountedBlock(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    tally.count += count;
    if constexpr (kNarrow<T>) {
        const SExactFigures<T> found = Measure(pixels, count);
        Widen(tally.valid, pixels, count, found.minimum, found.maximum, places);
        const double squares = tally.sums.squares + static_cast<double>(found.squares);
        if (squares >= kExactBound) return AddAsFloats(tally.sums, pixels, count);
        tally.sums.values += static_cast<double>(found.sum);
        tally.sums.squares = squares;
    } else if constexpr (std::is_same_v<T, float>) {
        const simd::SFloatRange range = simd::MeasureFloats(pixels, count);
        Widen(tally.valid, pixels, count, range.minimum, range.maximum, places);
        tally.sums.Add(pixels, count, range);
    } else {
        Widen(tally.valid, pixels, count, places);
        AddSerially(tally.sums, pixels, count);
    }
}

template <class T>
void AddCounted(STally& tally, const T* pixels, u32 count, const SPlaces& places) {
    constexpr u32 kBlock = kNarrow<T> ? simd::kMostPixels : simd::kFloatBlock;
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kBlock, count - at);
        AddCountedBlock(tally, pixels + at, n, places.From(at));
    }
}

template <class T>
void WidenInBlocks(SExtremes& extremes, const T* pixels, u32 count, const SPlaces& places) {
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(simd::kFloatBlock, count - at);
        if constexpr (std::is_same_v<T, float>) {
            const simd::SFloatRange range = simd::MeasureFloats(pixels + at, n);
            Widen(extremes, pixels + at, n, range.minimum, range.maximum, places.From(at));
        } else {
            Widen(extremes, pixels + at, n, places.From(at));
        }
    }
}

/// Counts among others: those get a value that is no new extreme, and what they add is taken off again, which integers
/// forgive. False, with nothing done, where the sums are no longer exact.
bool AddFilled(STally& tally, const u16* pixels, const u8* chosen, u32 count, const SPlaces& places) {
    const u8* const first = std::find_if(chosen, chosen + count, [](u8 byte) { return byte != 0; });
    if (first == chosen + count) return true;
    const u16 fill = tally.valid.any ? static_cast<u16>(tally.valid.minimum) : pixels[first - chosen];
    u16 filled[kTallyBlock];
    const u32 taken = simd::FillOthers(pixels, chosen, count, fill, filled);
    const SExactFigures<u16> found = Measure(filled, count);
    const u64 others = count - taken;
    const double squares = tally.sums.squares + static_cast<double>(found.squares - others * fill * fill);
    if (squares >= kExactBound) return false;
    if (!tally.valid.any) {
        const u32 index = places.At(static_cast<u32>(first - chosen));
        tally.valid = {static_cast<double>(fill), static_cast<double>(fill), index, index, true};
    }
    Widen(tally.valid, filled, count, found.minimum, found.maximum, places);
    tally.sums.values += static_cast<double>(found.sum - static_cast<i64>(others * fill));
    tally.sums.squares = squares;
    tally.count += taken;
    return true;
}

/// The chosen pixels of a block, in place where all are.
template <class T>
struct SChosen {
    T room[kTallyBlock + simd::kSlack];
    const T* pixels;
    u32 count;
    SPlaces places;

    /// `chosen` may be null: all.
    SChosen(const T* block, const u8* chosen, u32 blockCount, const SPlaces& all)
        : pixels(block), count(blockCount), places(all) {
        if (!chosen) return;
        pixels = room;
        places.chosen = chosen;
        if constexpr (sizeof(T) == 4) {
            count = simd::Collect(reinterpret_cast<const u32*>(block), chosen, count, reinterpret_cast<u32*>(room));
        } else {
            u32 n = 0;
            for (u32 i = 0; i < blockCount; ++i) {
                room[n] = block[i];
                n += chosen[i] ? 1 : 0;
            }
            count = n;
        }
    }
};

/// The chosen pixels of a block that all count; null chooses all.
template <class T>
void AddChosen(STally& tally, const T* pixels, const u8* chosen, u32 count, const SPlaces& places) {
    if constexpr (std::is_same_v<T, u16>) {
        if (chosen && AddFilled(tally, pixels, chosen, count, places)) return;
    }
    const SChosen<T> taken(pixels, chosen, count, places);
    AddCounted(tally, taken.pixels, taken.count, taken.places);
}

/// Which selected pixels of a block count, and what their status bytes come to.
struct SCounted {
    u8 chosen[kTallyBlock];
    u8 statusUnion = 0;
    bool all = true;  ///< none was selected that does not count

    SCounted(const u8* status, const u8* mask, u32 count) {
        // Nearly always all count, and then nobody asks which.
        if (!mask) {
            for (u32 i = 0; i < count; ++i) statusUnion |= status[i];
            if (IsCounted(statusUnion)) return;
            statusUnion = 0;
        }
        u8 excluded = 0;
        for (u32 i = 0; i < count; ++i) {
            const u8 selected = mask ? (mask[i] ? 0xFF : 0) : 0xFF;
            chosen[i] = static_cast<u8>(IsCounted(status[i]) ? selected : 0);
            statusUnion = static_cast<u8>(statusUnion | (status[i] & chosen[i]));
            excluded = static_cast<u8>(excluded | (selected & ~chosen[i]));
        }
        all = excluded == 0;
    }
};

/// A block of at most `kTallyBlock` pixels.
template <class T>
void AddBlock(STally& tally, const T* pixels, const u8* status, const u8* mask, u32 count, const SPlaces& places) {
    if (!status) {
        return AddChosen(tally, pixels, mask, count, places);
    }
    const SCounted counted(status, mask, count);
    if (tally.apart || !counted.all) {
        const SChosen<T> selected(pixels, mask, count, places);
        if (!tally.apart) tally.all = tally.valid;
        WidenInBlocks(tally.all, selected.pixels, selected.count, selected.places);
        tally.apart = true;
    }
    const SExtremes before = tally.valid;
    SExtremes& extremes = tally.valid;
    // New extremes then stand at a place in the status.
    AddChosen(tally, pixels, counted.all && !mask ? nullptr : counted.chosen, count, SPlaces{});
    if (!extremes.any) return;
    if (!before.any || extremes.minimum < before.minimum) {
        tally.minimumStatus = status[extremes.minimumIndex];
        extremes.minimumIndex = places.At(extremes.minimumIndex);
    }
    if (!before.any || extremes.maximum > before.maximum) {
        tally.maximumStatus = status[extremes.maximumIndex];
        extremes.maximumIndex = places.At(extremes.maximumIndex);
    }
    tally.statusUnion |= counted.statusUnion;
}

/// How many of eight bytes are not 0.
u32 ChosenOfEight(const u8* bytes) {
    constexpr u64 kLow7 = 0x7F7F7F7F7F7F7F7F;
    u64 word;
    std::memcpy(&word, bytes, sizeof word);
    return static_cast<u32>(std::popcount((((word & kLow7) + kLow7) | word) & ~kLow7));
}

}  // namespace

u32 SPlaces::At(u32 i) const {
    u32 place = i + passed;
    if (chosen) {
        u32 before = place;
        place = 0;
        for (u32 n = 0; before >= (n = ChosenOfEight(chosen + place)); before -= n) place += 8;
        for (; before || !chosen[place]; ++place) before -= chosen[place] ? 1 : 0;
    }
    if (list) return list[place];
    return rowLength ? first + place / rowLength * stride + place % rowLength : first + place;
}

void AddPixels(STally& tally, STypedData pixels, const u8* status, const u8* mask, u32 count, const SPlaces& places) {
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* first = static_cast<const T*>(pixels.data);
        if (!status && !mask) return AddCounted(tally, first, count, places);
        for (u32 at = 0, n = 0; at < count; at += n) {
            n = std::min(kTallyBlock, count - at);
            AddBlock(tally, first + at, status ? status + at : nullptr, mask ? mask + at : nullptr, n, places.From(at));
        }
    });
}

}  // namespace ovix::reduce
