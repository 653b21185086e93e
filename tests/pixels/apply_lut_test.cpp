#include "reduce/pixels/apply_lut.h"

#include <sys/mman.h>

#include <algorithm>
#include <numeric>

#include "tests/support/forms.h"
#include "tests/support/pixel_reference.h"
#include "tests/support/simd_targets.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// Pairs of tables, one a preset, and two beyond: no two entries near each other are the same, and status has long
/// stretches.
struct STables {
    static constexpr u32 kCount = 10;
    std::vector<float> values[kCount];
    std::vector<u8> stretches[kCount];
    float* luts[kCount];
    u8* statusLuts[kCount];

    STables() {
        for (u32 p = 0; p < kCount; ++p) {
            for (u32 k = 0; k < 65536; ++k) {
                values[p].push_back(static_cast<float>(k) * 0.75F - 1000.0F * static_cast<float>(p));
                stretches[p].push_back(static_cast<u8>((k < 120 ? 2 : k > 9000 ? 4 : 0) + 16 * p));
            }
            luts[p] = values[p].data();
            statusLuts[p] = stretches[p].data();
        }
    }
};

struct SLimits {
    u16 lower, upper;
};

/// A frame at the very end of its memory, and which preset each pixel has.
template <class S>
struct TFrame {
    TGuarded<S> pixels;
    std::vector<u8> map;

    TFrame(u32 count, u32 seed) : pixels(count, seed % 4, false) {
        CRandom random(seed);
        FillEdges(pixels, seed);
        for (u32 i = 0; i < count; ++i) map.push_back(random.Below(8));
    }
};

/// Demands entry Place(x) of table map[pixel] for each of the pixels, in this order, of `call(apply)`, which applies
/// the form, with a single pair of tables, with one a preset, and without a map of presets.
template <class D, class S>
void Check(STables& tables, TFrame<S>& frame, const std::vector<u32>& pixels, SLimits limits, bool withStatus,
           const auto& call) {
    for (const char* shape : {"single", "presets", "no map"}) {
        TGuarded<D> out(pixels.size() + 3, pixels.size() % 4);
        TGuarded<u8> status(pixels.size() + 3, pixels.size() % 4);
        const u8* const map = *shape == 'p' ? frame.map.data() : nullptr;
        ASSERT_TRUE(call([&](auto... form) {
            const STypedData in = frame.pixels.Typed(), to = out.Typed();
            const auto [lower, upper] = limits;
            u8* const flags = withStatus ? status.data() : nullptr;
            return *shape == 's' ? ApplyLUT(in, to, flags, form..., tables.luts[0], tables.statusLuts[0], lower, upper)
                                 : ApplyLUT(in, map, to, flags, form..., tables.luts, tables.statusLuts, lower, upper);
        })) << shape;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const u8 preset = map ? map[pixels[i]] : u8{0};
            const S x = frame.pixels[pixels[i]];
            const u32 k = Place(static_cast<float>(x), limits.lower, limits.upper);
            ASSERT_TRUE(Same(out[i], Cast<D>(tables.values[preset][k]))) << shape << i << " of " << +x;
            ASSERT_TRUE(!withStatus || status[i] == tables.stretches[preset][k]) << shape << i << " of " << +x;
        }
        EXPECT_TRUE(out.Untouched(pixels.size()) && status.Untouched(withStatus ? pixels.size() : 0));
    }
}

template <class D, class S>
void CheckWhole(STables& tables, TFrame<S>&& frame, SLimits limits, bool withStatus) {
    std::vector<u32> all(frame.map.size());
    std::iota(all.begin(), all.end(), 0u);
    Check<D>(tables, frame, all, limits, withStatus,
             [&](const auto& apply) { return apply(static_cast<u32>(all.size())); });
}

TEST(ApplyLUT, MapsAllPairsOfTypes) {
    STables tables;
    u32 seed = 1;
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
        CheckWhole<D>(tables, TFrame<S>(613, seed++), {0, 65535}, true);
        CheckWhole<D>(tables, TFrame<S>(613, seed++), {100, 16383}, false);
    });
}

TEST(ApplyLUT, GivesTheSameOnEveryProcessor) {
    STables tables;
    ForEachTarget([&] {
        u32 seed = 1;
        for (const SLimits limits : {SLimits{0, 65535}, {0, 16383}, {100, 200}, {16383, 40}, {65535, 65535}}) {
            for (const u32 count : {0u, 1u, 15u, 33u, 2047u, 2048u, 2049u, 5000u}) {
                const bool withStatus = ++seed % 2;
                CheckWhole<float>(tables, TFrame<u16>(count, seed), limits, withStatus);
                CheckWhole<float>(tables, TFrame<float>(count, seed), limits, withStatus);
                CheckWhole<u16>(tables, TFrame<float>(count, seed), limits, withStatus);
            }
        }
    });
}

TEST(ApplyLUT, RoundsEveryHalfAndItsNeighbours) {
    STables tables;
    ForEachTarget([&] {
        TFrame<float> frame(3 * 65536, 1);
        for (u32 k = 0; k < 65536; ++k) {
            const float half = static_cast<float>(k) + 0.5F;
            frame.pixels[3 * k] = std::nextafter(half, 0.0F);
            frame.pixels[3 * k + 1] = half;
            frame.pixels[3 * k + 2] = std::nextafter(half, 1e9F);
        }
        CheckWhole<float>(tables, std::move(frame), {0, 65535}, false);
    });
}

TEST(ApplyLUT, VisitsThePixelsOfEachForm) {
    const SForms forms;
    STables tables;
    TFrame<u16> frame(forms.Count(), 5);
    for (const EForm form : kForms) {
        Check<float>(tables, frame, forms.Visited(form), {0, 65535}, true,
                     [&](const auto& apply) { return forms.Call(form, apply); });
    }
}

/// What is known of a table's status, and of the presets of a stretch of pixels, is kept from block to block.
TEST(ApplyLUT, FollowsStretchesOfStatusAndOfPresets) {
    STables tables;
    CRandom random(8);
    const auto check = [&](const auto& countOf) {
        TFrame<u16> frame(9001, 0);
        for (u32 i = 0; i < 9001; ++i) {
            frame.pixels[i] = static_cast<u16>(countOf(i));
            frame.map[i] = static_cast<u8>(i < 3000 ? i / 300 % 8 : i < 6000 ? i / 13 % 8 : random.Below(8));
        }
        CheckWhole<float>(tables, std::move(frame), {0, 65535}, true);
    };
    const auto acrossAnEdge = [&](u32) { return 100 + random.Below(100) * 60; };
    check(acrossAnEdge);
    check([](u32 i) {  // with one pixel of another stretch in a block
        if (i == 2500 || i == 3500) return i == 2500 ? 119u : 9000u;
        return i < 3000 ? 130 + i % 50 : i < 6000 ? 119 + i % 2 : 9000 + i % 3;
    });
    // a stretch that is known up to its last entry, then the next entry
    check([](u32 i) { return i < 4096 ? 8990 + i % 11 : 8995 + i % 7; });
    for (std::vector<u8>& status : tables.stretches) std::fill(status.begin(), status.end(), u8{1});
    check(acrossAnEdge);
    std::fill(tables.stretches[5].begin(), tables.stretches[5].end(), u8{3});  // all presets but one agree
    check(acrossAnEdge);
}

TEST(ApplyLUT, TakesOneBufferForSourceAndDestination) {
    STables tables;
    std::vector<u16> counts(5000);
    std::vector<float> floats(5000);
    for (u32 i = 0; i < 5000; ++i) counts[i] = static_cast<u16>(4000 + i), floats[i] = static_cast<float>(i) + 0.25F;
    for (const STypedData buffer : {STypedData{counts.data(), UInt16}, {floats.data(), Flt32}})
        ASSERT_TRUE(ApplyLUT(buffer, buffer, nullptr, 5000, tables.luts[0], nullptr, 0, 65535));
    for (u32 i = 0; i < 5000; ++i) {
        ASSERT_EQ(counts[i], static_cast<u16>((4000 + i) * 0.75));
        ASSERT_EQ(floats[i], tables.values[0][i]);
    }
}

/// A NaN comes to entry 0, below the lower limit; the entries between need not be there.
TEST(ApplyLUT, LooksAtNoEntryBetweenThatOfNaNAndTheLowerLimit) {
    constexpr u16 kLower = 2 * 4096;  // no further from 0 than the entries of some blocks would be looked through
    void* const pages = mmap(nullptr, 65536, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    u8* const statusLut = static_cast<u8*>(pages);
    std::fill_n(statusLut, 65536, u8{5});
    ASSERT_EQ(mprotect(statusLut + 4096, kLower - 4096, PROT_NONE), 0);
    STables tables;
    std::vector<float> frame(5000, kLower);
    std::vector<u8> status(5000);
    frame[2500] = std::numeric_limits<float>::quiet_NaN();
    const STypedData data{frame.data(), Flt32};
    ASSERT_TRUE(ApplyLUT(data, data, status.data(), 5000, tables.luts[0], statusLut, kLower, 65535));
    EXPECT_EQ(frame[2500], tables.values[0][0]);
    EXPECT_EQ(status, std::vector<u8>(5000, 5));
    munmap(pages, 65536);
}

/// A map may name more than the eight presets of a source when the arrays of tables hold as many.
TEST(ApplyLUT, TakesNumbersBeyondThePresetsAsTheyStand) {
    STables tables;
    TFrame<u16> frame(300, 1);
    for (u32 i = 0; i < 300; ++i) frame.map[i] = static_cast<u8>(i < 100 ? 9 : i < 200 ? 8 : 7 + i % 3);
    CheckWhole<float>(tables, std::move(frame), {0, 65535}, true);
}

}  // namespace
}  // namespace ovix::reduce
