#include "reduce/pixels/simd/float_sums.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

// The order of these lines is what compiles the file once for each instruction set.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/float_sums.cpp"
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

using DDouble = hn::ScalableTag<double>;
using VDouble = hn::Vec<DDouble>;
using DBits = hn::RebindToUnsigned<DDouble>;
using VBits = hn::Vec<DBits>;

/// The hardware fetches ahead to the end of a page only: 4 KiB.
constexpr u32 kAhead = 1024;
/// Pixels whose half-way cases show in the bits of one word.
constexpr u32 kWord = 64;

/// The bits of a float as an integer of the same order, and back: below 0 the magnitude counts down.
constexpr i32 Ordered(i32 bits) { return bits ^ (bits >> 31 & 0x7FFFFFFF); }

HWY_INLINE VDouble LoadDoubles(const float* v) {
    return hn::PromoteTo(DDouble(), hn::LoadU(hn::Rebind<float, DDouble>(), v));
}

/// Calls f with all vectors of a block; the last may hold some pixels a second time. False when it has less than one.
template <class D, class F>
HWY_INLINE bool ForEachVector(D d, const float* v, u32 count, const F& f) {
    const u32 lanes = static_cast<u32>(hn::Lanes(d));
    if (count < lanes) return false;
    u32 i = 0;
    for (; i + lanes <= count; i += lanes) {
        hwy::Prefetch(v + i + kAhead);
        f(hn::LoadU(d, v + i));
    }
    if (i < count) f(hn::LoadU(d, v + (count - lanes)));
    return true;
}

SFloatRange Range(const float* v, u32 count) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> di;
    auto low = hn::Set(di, std::numeric_limits<i32>::max()), high = hn::Set(di, std::numeric_limits<i32>::min());
    const auto magnitudes = hn::Set(di, 0x7FFFFFFF);
    float padded[kWord];
    if (count < hn::Lanes(d)) {
        for (u32 i = 0; i < kWord; ++i) padded[i] = v[i % count];
        v = padded;
        count = kWord;
    }
    ForEachVector(d, v, count, [&](auto x) HWY_ATTR {
        const auto bits = hn::BitCast(di, x);
        const auto order = hn::Xor(bits, hn::And(hn::ShiftRight<31>(bits), magnitudes));
        low = hn::Min(low, order);
        high = hn::Max(high, order);
    });
    const i32 least = hn::GetLane(hn::MinOfLanes(di, low)), most = hn::GetLane(hn::MaxOfLanes(di, high));
    SFloatRange range{std::bit_cast<float>(Ordered(least)), std::bit_cast<float>(Ordered(most)), 0, 0, false};
    range.hasNaN = std::isnan(range.minimum) || std::isnan(range.maximum);
    range.least = range.minimum;
    range.most = range.maximum;
    if (range.minimum > 0) return range;
    // The magnitude less one, so that 0 becomes the greatest.
    const hn::RebindToUnsigned<decltype(d)> du;
    auto nearest = hn::Set(du, 0xFFFFFFFF);
    ForEachVector(d, v, count, [&](auto x) HWY_ATTR {
        nearest = hn::Min(nearest, hn::Sub(hn::BitCast(du, hn::Abs(x)), hn::Set(du, 1)));
    });
    const u32 bits = hn::GetLane(hn::MinOfLanes(du, nearest)) + 1;
    range.least = bits ? std::bit_cast<float>(bits) : std::numeric_limits<float>::infinity();
    range.most = std::max(std::abs(range.minimum), std::abs(range.maximum));
    return range;
}

u32 FindFirst(const float* v, u32 count, float value) {
    return static_cast<u32>(hn::Find(hn::ScalableTag<float>(), value, v, count));
}

/// A term added to a number of the grid, rounding as an addition to the sum does. Squares of floats are exact, so that
/// it does not matter whether product and sum are fused.
struct SSquare {
    HWY_INLINE VDouble AddTo(VDouble grid, VDouble x) const { return hn::MulAdd(x, x, grid); }
};
struct SValue {
    bool negative;
    HWY_INLINE VDouble AddTo(VDouble grid, VDouble x) const { return negative ? hn::Sub(grid, x) : hn::Add(grid, x); }
};

template <class V>
HWY_INLINE u64 BitsOf(DBits d, V mask) {
    alignas(8) u8 bytes[8] = {};
    hn::StoreMaskBits(d, mask, bytes);
    u64 bits;
    std::memcpy(&bits, bytes, sizeof bits);
    return bits;
}

/// Terms half-way between two points go to the one that makes the sum even; taken for an even sum, they went to the
/// even one. What must be added for those that met an odd sum. `odd` is the parity before the word.
template <class Term>
i64 MendHalfWay(const Term& term, const float* v, VDouble even, VDouble odd, bool startsOdd) {
    const DBits d;
    const auto one = hn::Set(d, 1);
    u64 changes = 0, halves = 0, upward = 0;
    for (u32 i = 0; i < kWord; i += static_cast<u32>(hn::Lanes(d))) {
        const auto x = LoadDoubles(v + i);
        const auto toEven = term.AddTo(even, x), toOdd = term.AddTo(odd, x);
        const auto lowEven = hn::BitCast(d, toEven), lowOdd = hn::BitCast(d, toOdd);
        changes |= BitsOf(d, hn::TestBit(lowEven, one)) << i;
        halves |= BitsOf(d, hn::Eq(hn::And(hn::Or(lowEven, lowOdd), one), hn::Zero(d))) << i;
        upward |= BitsOf(d, hn::RebindMask(d, hn::Gt(toOdd, toEven))) << i;
    }
    // Parities from the start of the word to each pixel, and what they were at the half-way term before it, which left
    // the sum even.
    for (int step = 1; step < 64; step *= 2) changes ^= changes << step;
    u64 before = changes & halves, known = halves;
    for (int step = 1; step < 64; step *= 2) {
        before |= (before << step) & ~known;
        known |= known << step;
    }
    const u64 start = startsOdd ? ~(known << 1) : 0;
    const u64 metOdd = halves & (changes ^ (before << 1 | start));
    return std::popcount(metOdd & upward) - std::popcount(metOdd & ~upward);
}

/// Adds whole words to a sum that stays on the grid of `base`, an even number. In integers: the bits of a double count
/// the points of its grid.
/// `anyOrder` takes the pixels themselves.
template <class Term>
u64 AddOnGrid(const Term& term, const float* v, u32 words, u64 sum, double base, double& anyOrder) {
    const DDouble d;
    const DBits db;
    const u64 baseBits = std::bit_cast<u64>(base);
    const auto even = hn::Set(d, base), odd = hn::Set(d, std::bit_cast<double>(baseBits + 1));
    const auto one = hn::Set(db, 1);
    const u32 lanes = static_cast<u32>(hn::Lanes(d));
    const auto bases = hn::Set(db, kWord / lanes * baseBits);  // of a word in one lane; an even number
    auto total = hn::Zero(db);
    auto values = hn::Zero(d);
    for (u32 word = 0; word < words; ++word, v += kWord) {
        auto points = hn::Zero(db), low = one;
        for (u32 i = 0; i < kWord; i += lanes) {
            const auto x = LoadDoubles(v + i);
            const auto toEven = hn::BitCast(db, term.AddTo(even, x)), toOdd = hn::BitCast(db, term.AddTo(odd, x));
            values = hn::Add(values, x);
            points = hn::Add(points, toEven);
            low = hn::And(low, hn::Or(toEven, toOdd));  // half-way terms make even numbers of both
        }
        if (!hn::AllTrue(db, hn::Eq(low, one))) {
            const int oddLanes = std::popcount(BitsOf(db, hn::TestBit(total, one)));
            sum += static_cast<u64>(MendHalfWay(term, v, even, odd, (sum + static_cast<u64>(oddLanes)) & 1));
        }
        total = hn::Add(total, hn::Sub(points, bases));
    }
    anyOrder += hn::GetLane(hn::SumOfLanes(d, values));
    return sum + hn::GetLane(hn::SumOfLanes(db, total));
}

u64 SquaresOnGrid(const float* v, u32 words, u64 sum, double base, double& anyOrder) {
    return AddOnGrid(SSquare(), v, words, sum, base, anyOrder);
}
u64 ValuesOnGrid(const float* v, u32 words, u64 sum, double base, bool negative) {
    double unused = 0;
    return AddOnGrid(SValue{negative}, v, words, sum, base, unused);
}
/// With fewer lanes one addition after the other is as fast.
bool LanesPay() { return hn::Lanes(DDouble()) >= 4; }

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace ovix::reduce::simd
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(Range);
HWY_EXPORT(FindFirst);
HWY_EXPORT(LanesPay);
HWY_EXPORT(SquaresOnGrid);
HWY_EXPORT(ValuesOnGrid);

namespace {

constexpr u32 kWordPixels = 64;
/// Pixels that are added one after the other where a sum leaves its grid.
constexpr u32 kPiece = 128;
/// A hair below 1: what is left at the ends of a grid for the roundings of a block.
constexpr double kInside = 1 - 1.0 / (1 << 20);

/// The power of two at or below a magnitude, which begins its grid.
double GridOf(double magnitude) { return std::bit_cast<double>(std::bit_cast<u64>(magnitude) & 0x7FF0000000000000); }

/// The power of two of which a number is an odd multiple; infinite for 0. Sums are far from the least numbers.
double UnitOf(double number) {
    if (number == 0) return std::numeric_limits<double>::infinity();
    const u64 zeros = static_cast<u64>(std::countr_zero(std::bit_cast<u64>(number) | u64{1} << 52));
    return GridOf(std::abs(number)) * std::bit_cast<double>((1023 - 52 + zeros) << 52);
}

/// Whether sums of numbers up to `most` are exact in any order, from `sum` on: they are multiples of one unit and no
/// more of them than a double can count.
bool IsExact(double sum, u32 count, double least, double most) {
    constexpr double kPrecision = 1 << 23, kLeastUnit = 0x1p-149;
    const double unit = std::min(UnitOf(sum), std::max(GridOf(least) / kPrecision, kLeastUnit));
    return std::abs(sum) + count * most <= unit * 0x1p52;
}

bool StaysOnGrid(double magnitude, double least, double most) {
    const double grid = GridOf(magnitude);
    return (least == 0 || magnitude + least >= grid / kInside) && magnitude + most <= 2 * grid * kInside;
}

/// Adds pixels on the grid of a sum; what does not fill a word counts as filled up with zeros, which add nothing.
template <class AddWords>
double AddOnGrid(const float* v, u32 count, double sum, const AddWords& addWords) {
    u64 bits = std::bit_cast<u64>(sum);
    const u32 words = count / kWordPixels, rest = count % kWordPixels;
    if (words) bits = addWords(v, words, bits);
    if (rest) {
        float padded[kWordPixels] = {};
        std::memcpy(padded, v + count - rest, rest * sizeof(float));
        bits = addWords(padded, 1, bits);
    }
    return std::bit_cast<double>(bits);
}

/// False, with nothing added, where the order of the additions may matter.
bool AddInLanes(SSums& sums, const float* v, u32 count, double least, double most) {
    if (!(sums.squares > 0 && StaysOnGrid(sums.squares, 0, count * most * most))) return false;
    const bool exact = IsExact(sums.values, count, least, most);
    const double magnitude = std::abs(sums.values);
    if (!exact && !StaysOnGrid(magnitude, -(count * most), count * most)) return false;
    double anyOrder = 0;
    sums.squares = AddOnGrid(v, count, sums.squares, [&](const float* at, u32 words, u64 bits) {
        return HWY_DYNAMIC_DISPATCH(SquaresOnGrid)(at, words, bits, GridOf(sums.squares), anyOrder);
    });
    if (exact) {
        sums.values += anyOrder;
    } else {
        const bool negative = sums.values < 0;
        const double added = AddOnGrid(v, count, magnitude, [&](const float* at, u32 words, u64 bits) {
            return HWY_DYNAMIC_DISPATCH(ValuesOnGrid)(at, words, bits, 1.5 * GridOf(magnitude), negative);
        });
        sums.values = negative ? -added : added;
    }
    return true;
}

void AddSerially(SSums& sums, const float* v, u32 count) {
    double values = sums.values, squares = sums.squares;
    for (u32 i = 0; i < count; ++i) {
        values += v[i];
        squares += double{v[i]} * v[i];
    }
    sums = {values, squares};
}

}  // namespace

SFloatRange MeasureFloats(const float* pixels, u32 count) {
    SFloatRange range = HWY_DYNAMIC_DISPATCH(Range)(pixels, count);
    if (!range.hasNaN) return range;
    range.minimum = std::numeric_limits<float>::infinity();
    range.maximum = -range.minimum;
    range.most = range.minimum;
    for (u32 i = 0; i < count; ++i) {
        if (pixels[i] < range.minimum) range.minimum = pixels[i];
        if (pixels[i] > range.maximum) range.maximum = pixels[i];
    }
    return range;
}

u32 FindFloat(const float* pixels, u32 count, float value) {
    return HWY_DYNAMIC_DISPATCH(FindFirst)(pixels, count, value);
}

void SSums::Add(const float* pixels, u32 count, const SFloatRange& range) {
    const bool finite = !range.hasNaN && std::isfinite(range.most);
    // What has come to NaN no pixel changes, and what is infinite no finite one.
    if (range.most == 0 || (finite && !std::isfinite(squares)) || (std::isnan(values) && std::isnan(squares))) return;
    if (!finite || !HWY_DYNAMIC_DISPATCH(LanesPay)()) return AddSerially(*this, pixels, count);
    if (AddInLanes(*this, pixels, count, range.least, range.most)) return;
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kPiece, count - at);
        if (!AddInLanes(*this, pixels + at, n, range.least, range.most)) AddSerially(*this, pixels + at, n);
    }
}

}  // namespace ovix::reduce::simd
#endif
