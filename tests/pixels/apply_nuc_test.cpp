#include "reduce/pixels/apply_nuc.h"

#include "tests/support/pixel_buffers.h"
#include "tests/support/pixel_reference.h"
#include "tests/support/simd_targets.h"

namespace ovix::reduce {
namespace {

using namespace test;

struct SClip {
    int on;
    double minimum, maximum;
};
constexpr SClip kClips[] = {{0, 0, 0}, {1, 0, 16383}, {1, -20.5, 200.7}, {1, 500, 30}};

/// The corrected pixel: data at `at`, gain and offset at `tablesAt`.
template <class D, class S>
D Corrected(S x, SCorrection& tables, u32 tablesAt, const SClip& clip) {
    using W = std::conditional_t<std::is_same_v<S, double>, double, float>;
    const W gained = static_cast<W>(x) * (tables.Gain() ? static_cast<W>(tables.gain[tablesAt]) : 1);
    const i16 offset = tables.Offset() ? tables.offset[tablesAt] : i16{0};
    D value = Cast<D>(tables.Offset() ? gained + static_cast<W>(offset) : gained);
    if (!tables.Gain() && !std::is_floating_point_v<S>) {
        // the sum of two integers in C, made with 64 bits and cut to the type that C makes it in
        const u64 sum = static_cast<u64>(x) + static_cast<u64>(i64{offset});
        value = tables.Offset() ? Cast<D>(static_cast<decltype(x + i16{})>(sum)) : Cast<D>(x);
    }
    if (!clip.on) return value;
    const D low = Cast<D>(clip.minimum), high = Cast<D>(clip.maximum);
    return value < low ? low : value > high ? high : value;
}

template <class S, class D>
void CheckWhole(u32 count, u32 given, const SClip& clip, u32 seed) {
    TGuarded<S> frame(count, seed % 4, false);
    TGuarded<D> out(count + 3, seed % 4);
    FillEdges(frame, seed);
    SCorrection tables(count, given, seed);
    ApplyNUC(out.Typed(), frame.Typed(), count, tables.Gain(), tables.Offset(), tables.Replace(), clip.on, clip.minimum,
             clip.maximum);
    for (u32 i = 0; i < count; ++i) {
        const u32 j = given & 4 ? tables.replace[i] : i;
        const D expected = Corrected<D>(frame[j], tables, j, clip);
        ASSERT_TRUE(Same(out[i], expected)) << +out[i] << " for " << +expected << " at " << i << " of " << +frame[j];
    }
    EXPECT_TRUE(out.Untouched(count));
}

TEST(ApplyNUC, CorrectsAllPairsOfTypes) {
    u32 seed = 1;
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        if constexpr (!std::is_same_v<S, u64> && !std::is_same_v<D, u64>) {
            SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
            for (u32 given = 0; given < 8; ++given)
                for (const SClip& clip : kClips) CheckWhole<S, D>(531, given, clip, seed++);
        }
    });
}

TEST(ApplyNUC, GivesTheSameOnEveryProcessor) {
    ForEachTarget([] {
        u32 seed = 1;
        for (const u32 count : {0u, 1u, 17u, 64u, 511u, 513u, 4095u, 4096u, 4097u, 9000u}) {
            for (u32 given = 1; given < 8; ++given) {
                for (const SClip& clip : kClips) {
                    CheckWhole<u16, u16>(count, given, clip, seed++);
                    CheckWhole<u16, float>(count, given, clip, seed++);
                    CheckWhole<float, float>(count, given, clip, seed++);
                }
            }
        }
    });
}

/// Which index the data and the tables are read at, for each form; all reading is out of one frame of `kCount`.
TEST(ApplyNUC, ReadsTheIndexOfEachForm) {
    constexpr u32 kCount = 1500;
    CRandom random(3);
    TGuarded<u16> frame(kCount, 0, false);
    FillEdges(frame, 3);
    std::vector<u8> status;
    std::vector<u32> indices;
    for (u32 i = 0; i < kCount; ++i) {
        // stretches of one preset, and presets that change from pixel to pixel
        status.push_back(i < 700 ? static_cast<u8>(i / 300) : random.Below(8));
        indices.push_back(random() % kCount);
    }
    std::vector<SCorrection> tables;
    float* gains[8];
    i16* offsets[8];
    u32* replaces[8];
    for (u32 p = 0; p < 8; ++p) {
        SCorrection& made = tables.emplace_back(kCount, 7 - p, 100 + p);  // its tables stay where they are
        gains[p] = made.Gain(), offsets[p] = made.Offset(), replaces[p] = made.Replace();
    }
    for (const SClip& clip : kClips) {
        const auto check = [&](const char* form, const auto& expected) {
            return [&, form](auto... arguments) {
                TGuarded<float> out(kCount + 3);
                ApplyNUC(out.Typed(), frame.Typed(), arguments..., clip.on, clip.minimum, clip.maximum);
                for (u32 i = 0; i < kCount; ++i) ASSERT_TRUE(Same(out[i], expected(i))) << form << ' ' << i;
                EXPECT_TRUE(out.Untouched(kCount)) << form;
            };
        };
        const auto at = [&](u32 p, u32 data, u32 table) {
            return Corrected<float>(frame[data], tables[p], table, clip);
        };
        const auto replaced = [&](u32 p, u32 i) {
            const u32 j = replaces[p] ? replaces[p][i] : i;
            return at(p, j, j);
        };
        const auto listed = [&](u32 p, u32 i) {
            const u32 k = indices[i];
            const u32 j = !replaces[p] ? k : clip.on ? replaces[p][k] : replaces[p][i];
            return at(p, j, j);
        };
        const u8 *const map = status.data(), *const noMap = nullptr;
        const u32* const list = indices.data();
        u32* const noReplaces = nullptr;
        check("presets", [&](u32 i) { return replaced(map[i], i); })(map, kCount, gains, offsets, replaces);
        check("no status", [&](u32 i) { return replaced(0, i); })(noMap, kCount, gains, offsets, replaces);
        check("list", [&](u32 i) { return at(0, i, list[i]); })(list, kCount, *gains, *offsets, noReplaces);
        check("list, map", [&](u32 i) { return replaced(0, list[i]); })(list, kCount, *gains, *offsets, *replaces);
        check("list, presets", [&](u32 i) { return listed(map[list[i]], i); })(list, map, kCount, gains, offsets,
                                                                               replaces);
        check("list, no status", [&](u32 i) { return listed(0, i); })(list, noMap, kCount, gains, offsets, replaces);
    }
}

TEST(ApplyNUC, InOneBufferAPixelMayBeReplacedByACorrectedOne) {
    constexpr u32 kCount = 5000;
    TGuarded<u16> buffer(kCount, 0, false);
    FillEdges(buffer, 9);
    SCorrection tables(kCount, 7, 9);
    std::vector<u16> expected(buffer.begin(), buffer.end());
    for (u32 i = 0; i < kCount; ++i) {
        const u32 j = tables.replace[i];
        expected[i] = Corrected<u16>(expected[j], tables, j, kClips[1]);
    }
    ApplyNUC(buffer.Typed(), buffer.Typed(), kCount, tables.Gain(), tables.Offset(), tables.Replace(), 1, 0, 16383);
    for (u32 i = 0; i < kCount; ++i) ASSERT_EQ(buffer[i], expected[i]) << i;
}

TEST(ApplyNUC, DoesNothingForOtherTypesAndCounts) {
    u16 in[2] = {1, 2}, out[2] = {7, 7};
    u64 wide[2] = {7, 7};
    for (const u32 count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        ApplyNUC({out, UInt16}, {in, UInt16}, count, nullptr, nullptr, nullptr, 0, 0, 0);
        ApplyNUC({out, UInt16}, {in, UInt16}, static_cast<const u32*>(nullptr), count, nullptr, nullptr, nullptr, 0, 0,
                 0);
    }
    for (const EDataType type : {UInt64, Opaque, NoPixels}) {
        ApplyNUC({out, UInt16}, {wide, type}, 1, nullptr, nullptr, nullptr, 0, 0, 0);
        ApplyNUC({wide, type}, {in, UInt16}, 1, nullptr, nullptr, nullptr, 1, 0, 1);
    }
    EXPECT_EQ(out[0], 7);
    EXPECT_EQ(wide[0], 7);
}

}  // namespace
}  // namespace ovix::reduce
