#include "reduce/pixels/abate.h"

#include <array>

#include "tests/support/pixel_buffers.h"
#include "tests/support/pixel_reference.h"
#include "tests/support/simd_targets.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr double kMinimum = -300.75;  // stands unrounded
constexpr u16 kLow[8] = {1000, 900, 2000, 10, 5000, 1000, 300, 1};
constexpr u16 kHigh[8] = {8000, 9000, 6000, 15000, 4000, 12000, 700, 3000};

/// Everything that a call takes, for eight presets; of the tables those that `given` names.
template <class T>
struct SPresets {
    std::vector<TGuarded<T>> frames;
    std::vector<SCorrection> tables;
    void* sources[8];
    float* gains[8];
    i16* offsets[8];
    u32* replaces[8];
    bool valid[8];
    u8 order[8];

    SPresets(u32 count, u32 given, u32 seed) {
        CRandom random(seed);
        for (u32 p = 0; p < 8; ++p) {
            TGuarded<T>& frame = frames.emplace_back(count, p % 4, false);
            SCorrection& made = tables.emplace_back(count, given, seed + p);
            FillEdges(frame, seed + p);
            sources[p] = frame.data();
            gains[p] = made.Gain(), offsets[p] = made.Offset(), replaces[p] = made.Replace();
            valid[p] = random() % 3 != 0;
            order[p] = random.Below(10);  // repeated ones, and numbers that are no preset
        }
        order[3] = 2;
        valid[2] = true;
    }

    /// The corrected value of one pixel.
    T Corrected(u32 p, u32 i, bool clip, double minimum, double maximum) const {
        const u32 j = replaces[p] ? replaces[p][i] : i;
        const T x = static_cast<const T*>(sources[p])[j];
        const float low = static_cast<float>(minimum), high = static_cast<float>(maximum), v = static_cast<float>(x);
        const float g = gains[p] ? gains[p][j] : 1, o = offsets[p] ? offsets[p][j] : i16{0};
        const auto limited = [&](float value, float inside) {
            return low > value ? low : value > high ? high : inside;
        };
        const float corrected = v * g + o;
        if constexpr (std::is_same_v<T, float>) return clip ? limited(corrected, corrected) : corrected;
        // Counts are rounded where there is a gain, before the offset is added; with a clip behind it, but no limit is.
        const float whole = !gains[p] ? corrected : clip ? Round(corrected) : Round(v * g) + o;
        const float result = clip ? limited(corrected, whole) : whole;
        const i32 bits = result >= -0x1p31F && result < 0x1p31F ? static_cast<i32>(result) : INT32_MIN;
        return static_cast<T>(static_cast<u32>(bits));
    }
};

template <class T>
void CheckMerge(u32 count, u32 given, EAbateMode mode, bool clip, u32 seed) {
    const SPresets<T> presets(count, given, seed);
    TGuarded<T> out(count + 3, seed % 4);
    TGuarded<u8> status(count + 3, seed % 4);
    ASSERT_TRUE(Abate(DataTypeOf<T>(), presets.sources, count, out.data(), status.data(), presets.valid, presets.order,
                      kLow, kHigh, mode, presets.gains, presets.offsets, presets.replaces, clip, kMinimum, 16383));
    std::vector<u8> walk;
    for (const u8 p : presets.order)
        if (p < 8 && presets.valid[p]) walk.push_back(p);
    if (mode != AbateFromFirst) walk = {walk.rbegin(), walk.rend()};
    for (u32 i = 0; i < count; ++i) {
        u8 chosen = walk.back();
        for (const u8 p : walk) {
            const T c = presets.Corrected(p, i, clip, kMinimum, 16383);
            if (mode == AbateFromFirst ? c > static_cast<T>(kHigh[p]) : c < static_cast<T>(kLow[p])) continue;
            chosen = p;
            break;
        }
        ASSERT_EQ(status[i], chosen) << i;
        ASSERT_TRUE(Same(out[i], presets.Corrected(chosen, i, clip, kMinimum, 16383))) << +out[i] << " at " << i;
    }
    EXPECT_TRUE(out.Untouched(count));
    EXPECT_TRUE(status.Untouched(count));
}

TEST(Abate, MergesBothTypesOnEveryProcessor) {
    ForEachTarget([] {
        u32 seed = 1;
        for (const u32 count : {0u, 1u, 31u, 2047u, 2048u, 2049u, 5000u}) {
            for (u32 given = 0; given < 8; ++given) {
                for (const EAbateMode mode : {AbateFromFirst, AbateFromLast, static_cast<EAbateMode>(7)}) {
                    CheckMerge<u16>(count, given, mode, seed % 2, seed);
                    CheckMerge<float>(count, given, mode, seed % 2, seed);
                    ++seed;
                }
            }
        }
    });
}

/// Two frames of one pixel, without tables.
TEST(Abate, TakesTheFirstThatQualifies) {
    const struct {
        const char* name;
        EAbateMode mode;
        u16 first, second;
        std::array<bool, 8> valid;
        std::array<u8, 8> order;  // 9 and 255 are no preset
        bool result;
        u16 value;
        u8 status;
    } cases[] = {
        {"none below", AbateFromFirst, 20000, 16000, {1, 1}, {0, 1, 9, 9, 9, 9, 9, 9}, true, 16000, 1},
        {"none above", AbateFromLast, 500, 800, {1, 1}, {0, 1, 9, 9, 9, 9, 9, 9}, true, 500, 0},
        {"at the high threshold", AbateFromFirst, 15000, 16000, {1, 1}, {0, 1, 9, 9, 9, 9, 9, 9}, true, 15000, 0},
        {"at the low threshold", AbateFromLast, 3000, 1000, {1, 1}, {0, 1, 9, 9, 9, 9, 9, 9}, true, 1000, 1},
        {"one above it", AbateFromFirst, 15001, 14, {1, 1}, {0, 1, 9, 9, 9, 9, 9, 9}, true, 14, 1},
        {"single", AbateFromFirst, 65535, 1, {1, 0}, {1, 0, 9, 9, 9, 9, 9, 9}, true, 65535, 0},
        {"reordered", AbateFromFirst, 3, 4, {1, 1}, {1, 0, 9, 9, 9, 9, 9, 9}, true, 4, 1},
        {"none valid", AbateFromFirst, 3, 4, {}, {0, 1, 2, 3, 4, 5, 6, 7}, false, 7, 99},
        {"none in the order", AbateFromLast, 3, 4, {1, 1}, {2, 3, 255, 8, 8, 8, 8, 8}, false, 7, 99},
    };
    const u16 low[8] = {1000, 1000}, high[8] = {15000, 15000};
    for (const auto& c : cases) {
        u16 first = c.first, second = c.second, out = 7;
        u8 status = 99;
        void* const sources[8] = {&first, &second};
        const auto merge = [&](u16* to, u8* map) {
            return Abate(UInt16, sources, 1, to, map, c.valid.data(), c.order.data(), low, high, c.mode, nullptr,
                         nullptr, nullptr, false, 0, 0);
        };
        EXPECT_EQ(merge(&out, &status), c.result) << c.name;
        EXPECT_TRUE(out == c.value && status == c.status) << c.name << ' ' << out << ' ' << +status;
        EXPECT_EQ(merge(&second, nullptr), c.result) << c.name;  // without a status, and into the second source
        EXPECT_EQ(second, c.result ? c.value : c.second) << c.name;
    }
}

/// Into the first source: a map may lead to a pixel that was merged before, and then finds what that became.
TEST(Abate, FindsMergedPixelsInPlace) {
    u16 first[] = {100, 200, 9000, 300, 400, 9001}, second[] = {1, 2, 77, 3, 4, 50};
    u32 replace[] = {0, 1, 2, 3, 4, 2};
    void* const sources[8] = {first, second};
    const bool valid[8] = {true, true};
    const u8 order[8] = {0, 1, 9, 9, 9, 9, 9, 9};
    u32* const maps[8] = {replace};
    const u16 high[8] = {8000, 8000};
    u8 status[6];
    ASSERT_TRUE(Abate(UInt16, sources, 6, first, status, valid, order, kLow, high, AbateFromFirst, nullptr, nullptr,
                      maps, false, 0, 0));
    EXPECT_EQ(first[2], 77);
    EXPECT_EQ(first[5], 77) << "not 50: the pixel that stands in qualifies by now";
    EXPECT_EQ(status[5], 0);
}

}  // namespace
}  // namespace ovix::reduce
