#include "reduce/pixels/apply_lut.h"

#include <algorithm>
#include <functional>

#include "tests/support/pixel_buffers.h"
#include "tests/support/pixel_reference.h"
#include "tests/support/simd_targets.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// Eight pairs of tables, one a preset: no two entries near each other are the same, and status has long stretches.
struct STables {
    std::vector<float> values[8];
    std::vector<u8> stretches[8];
    float* luts[8];
    u8* statusLuts[8];

    STables() {
        for (u32 p = 0; p < 8; ++p) {
            for (u32 k = 0; k < 65536; ++k) {
                values[p].push_back(static_cast<float>(k) * 0.75F - 1000.0F * static_cast<float>(p));
                stretches[p].push_back(static_cast<u8>((k < 120 ? 2 : k > 9000 ? 4 : 0) + 16 * p));
            }
            luts[p] = values[p].data();
            statusLuts[p] = stretches[p].data();
        }
    }
};

/// Demands entry Place(x) of table map[pixel] for each pixel in this order.
using FApply = std::function<bool(STypedData, u8*)>;

template <class S, class D>
void Check(TGuarded<S>& frame, TGuarded<u8>* map, const STables& tables, const std::vector<u32>& pixels, u16 lower,
           u16 upper, bool withStatus, const FApply& apply) {
    TGuarded<D> out(pixels.size() + 3, pixels.size() % 4);
    TGuarded<u8> status(pixels.size() + 3, pixels.size() % 4);
    ASSERT_TRUE(apply(out.Typed(), withStatus ? status.data() : nullptr));
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const u8 preset = map ? (*map)[pixels[i]] : u8{0};
        const u32 k = Place(static_cast<float>(frame[pixels[i]]), lower, upper);
        ASSERT_TRUE(Same(out[i], Cast<D>(tables.values[preset][k]))) << i << " of " << +frame[pixels[i]];
        if (!withStatus) continue;
        ASSERT_EQ(status[i], tables.stretches[preset][k]) << i << " of " << +frame[pixels[i]];
    }
    EXPECT_TRUE(out.Untouched(pixels.size()));
    EXPECT_TRUE(status.Untouched(withStatus ? pixels.size() : 0));
}

struct SLimits {
    u16 lower, upper;
};

template <class S, class D>
void CheckWhole(STables& tables, u32 count, SLimits limits, u32 seed) {
    TGuarded<S> frame(count, seed % 4, false);
    TGuarded<u8> map(count, 0, false);
    FillEdges(frame, seed);
    CRandom random(seed);
    for (u8& p : map) p = random.Below(8);
    std::vector<u32> pixels;
    for (u32 i = 0; i < count; ++i) pixels.push_back(i);
    const auto [lower, upper] = limits;
    const bool withStatus = seed % 2;
    Check<S, D>(frame, nullptr, tables, pixels, lower, upper, withStatus, [&](STypedData out, u8* status) {
        return ApplyLUT(frame.Typed(), out, status, count, tables.luts[0], tables.statusLuts[0], lower, upper);
    });
    Check<S, D>(frame, &map, tables, pixels, lower, upper, withStatus, [&](STypedData out, u8* status) {
        return ApplyLUT(frame.Typed(), map.data(), out, status, count, tables.luts, tables.statusLuts, lower, upper);
    });
    Check<S, D>(frame, nullptr, tables, pixels, lower, upper, true, [&](STypedData out, u8* status) {
        return ApplyLUT(frame.Typed(), nullptr, out, status, count, tables.luts, tables.statusLuts, lower, upper);
    });
}

TEST(ApplyLUT, MapsAllPairsOfTypes) {
    STables tables;
    u32 seed = 1;
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
        CheckWhole<S, D>(tables, 613, {0, 65535}, seed++);
        CheckWhole<S, D>(tables, 613, {100, 16383}, seed++);
    });
}

TEST(ApplyLUT, GivesTheSameOnEveryProcessor) {
    STables tables;
    ForEachTarget([&] {
        u32 seed = 1;
        for (const SLimits limits : {SLimits{0, 65535}, {0, 16383}, {100, 200}, {16383, 40}, {65535, 65535}}) {
            for (const u32 count : {0u, 1u, 15u, 33u, 2047u, 2048u, 2049u, 5000u}) {
                CheckWhole<u16, float>(tables, count, limits, ++seed);
                CheckWhole<float, float>(tables, count, limits, ++seed);
                CheckWhole<float, u16>(tables, count, limits, ++seed);
            }
        }
    });
}

TEST(ApplyLUT, RoundsEveryHalfAndItsNeighbours) {
    STables tables;
    TGuarded<float> frame(3 * 65536, 0, false), out(3 * 65536);
    for (u32 k = 0; k < 65536; ++k) {
        const float half = static_cast<float>(k) + 0.5F;
        frame[3 * k] = std::nextafter(half, 0.0F);
        frame[3 * k + 1] = half;
        frame[3 * k + 2] = std::nextafter(half, 1e9F);
    }
    ForEachTarget([&] {
        const u32 count = 3 * 65536;
        ASSERT_TRUE(ApplyLUT(frame.Typed(), out.Typed(), nullptr, count, tables.luts[0], nullptr, 0, 65535));
        for (u32 i = 0; i < count; ++i) {
            const u32 k = std::min(65535u, i / 3 + (i % 3 ? 1 : 0));
            ASSERT_EQ(out[i], tables.values[0][k]) << frame[i];
        }
    });
}

TEST(ApplyLUT, StatusIsThatOfEachPixelAroundTheEdgesOfStretches) {
    STables tables;
    TGuarded<u16> frame(9000, 0, false);
    TGuarded<float> out(9000);
    TGuarded<u8> status(9000);
    for (u32 i = 0; i < 9000; ++i) {
        frame[i] = static_cast<u16>(i < 3000 ? 130 + i % 50 : i < 6000 ? 119 + i % 2 : 9000 + i % 3);
    }
    frame[2500] = 119;  // one pixel of another stretch in a block
    frame[3500] = 9000;
    ASSERT_TRUE(
        ApplyLUT(frame.Typed(), out.Typed(), status.data(), 9000, tables.luts[0], tables.statusLuts[0], 0, 65535));
    for (u32 i = 0; i < 9000; ++i) ASSERT_EQ(status[i], frame[i] < 120 ? 2 : frame[i] > 9000 ? 4 : 0) << i;
    // a stretch that is known up to its last entry, then the next entry
    for (u32 i = 0; i < 9000; ++i) frame[i] = static_cast<u16>(i < 4096 ? 8990 + i % 11 : 8995 + i % 7);
    ASSERT_TRUE(
        ApplyLUT(frame.Typed(), out.Typed(), status.data(), 9000, tables.luts[0], tables.statusLuts[0], 0, 65535));
    for (u32 i = 0; i < 9000; ++i) ASSERT_EQ(status[i], frame[i] > 9000 ? 4 : 0) << i;
}

TEST(ApplyLUT, VisitsThePixelsOfEachForm) {
    constexpr u16 kWidth = 37, kHeight = 31;
    constexpr u32 kStride = 41;
    STables tables;
    TGuarded<u16> frame(kWidth * kHeight, 0, false);
    TGuarded<u8> map(kWidth * kHeight, 0, false), mask(kStride * kHeight, 0, false);
    FillEdges(frame, 5);
    CRandom random(5);
    for (u8& p : map) p = random.Below(8);
    for (u8& m : mask) m = random.Below(2);
    std::vector<u32> indices;
    for (u32 i = 0; i < 700; ++i) indices.push_back(random() % (kWidth * kHeight));

    const auto both = [&](const std::vector<u32>& pixels, auto... form) {
        Check<u16, float>(frame, nullptr, tables, pixels, 0, 65535, true, [&](STypedData out, u8* status) {
            return ApplyLUT(frame.Typed(), out, status, form..., tables.luts[0], tables.statusLuts[0], u16{0},
                            u16{65535});
        });
        Check<u16, float>(frame, &map, tables, pixels, 0, 65535, true, [&](STypedData out, u8* status) {
            return ApplyLUT(frame.Typed(), map.data(), out, status, form..., tables.luts, tables.statusLuts, u16{0},
                            u16{65535});
        });
    };
    const SArea area{3, 5, 29, 33}, empty{4, 2, 3, 8};
    both(indices, static_cast<const u32*>(indices.data()), 700u);
    both(Area(kWidth, area), kWidth, kHeight, area);
    both({}, kWidth, kHeight, empty);
    const TArray<SScanLine> lines{{7, 1, 6}, {2, 36, 36}, {2, 3, 2}, {30, 0, 36}};
    both(Lines(kWidth, lines), kWidth, kHeight, lines);
    both(Area(kWidth, area, mask.data(), kStride), kWidth, kHeight, area, static_cast<const u8*>(mask.data()), kStride);
}

TEST(ApplyLUT, FollowsStretchesOfOnePreset) {
    constexpr u32 kCount = 9001;
    STables tables;
    TGuarded<u16> frame(kCount, 0, false);
    TGuarded<u8> map(kCount, 0, false);
    CRandom random(8);
    for (u16& x : frame) x = static_cast<u16>(100 + random.Below(100) * 60);  // across the edge of a stretch of status
    std::vector<u32> pixels;
    for (u32 i = 0, left = 0, longest = 1; i < kCount; ++i, --left) {
        if (left == 0) {
            longest = longest % 300 + 7;
            left = 1 + random.Below(255) % longest;
            map[i] = random.Below(8);
        } else {
            map[i] = map[i - 1];
        }
        pixels.push_back(i);
    }
    const auto check = [&] {
        Check<u16, float>(frame, &map, tables, pixels, 0, 65535, true, [&](STypedData out, u8* status) {
            return ApplyLUT(frame.Typed(), map.data(), out, status, kCount, tables.luts, tables.statusLuts, 0, 65535);
        });
    };
    check();
    for (std::vector<u8>& status : tables.stretches) std::fill(status.begin(), status.end(), u8{1});
    check();
    tables.stretches[5].assign(65536, 3);  // all presets but one agree
    for (u32 p = 0; p < 8; ++p) tables.statusLuts[p] = tables.stretches[p].data();
    check();
}

TEST(ApplyLUT, TakesOneBufferForSourceAndDestination) {
    STables tables;
    std::vector<u16> counts;
    std::vector<float> floats;
    for (u32 i = 0; i < 5000; ++i) {
        counts.push_back(static_cast<u16>(4000 + i));
        floats.push_back(static_cast<float>(i) + 0.25F);
    }
    ASSERT_TRUE(
        ApplyLUT({counts.data(), UInt16}, {counts.data(), UInt16}, nullptr, 5000, tables.luts[0], nullptr, 0, 65535));
    ASSERT_TRUE(
        ApplyLUT({floats.data(), Flt32}, {floats.data(), Flt32}, nullptr, 5000, tables.luts[0], nullptr, 0, 65535));
    for (u32 i = 0; i < 5000; ++i) {
        ASSERT_EQ(counts[i], static_cast<u16>((4000 + i) * 0.75));
        ASSERT_EQ(floats[i], tables.values[0][i]);
    }
}

TEST(ApplyLUT, RefusesOtherTypes) {
    float lut[1] = {}, dest[1] = {7};
    u8 status[1] = {9}, statusLut[1] = {};
    u16 source[1] = {};
    EXPECT_FALSE(ApplyLUT({source, Opaque}, {dest, Flt32}, status, 1, lut, statusLut, 0, 0));
    EXPECT_FALSE(ApplyLUT({source, UInt16}, {dest, NoPixels}, status, 1, lut, statusLut, 0, 0));
    EXPECT_EQ(dest[0], 7);
    EXPECT_EQ(status[0], 9);
}

}  // namespace
}  // namespace ovix::reduce
