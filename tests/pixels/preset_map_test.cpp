#include "reduce/pixels/selection.h"

#include <gtest/gtest.h>

#include <vector>

namespace ovix::reduce {
namespace {

TEST(PresetMap, EachSelectedPixelIsHeldAgainstThePresets) {
    const bool usable[8] = {true, false, true, true};
    for (u32 size = 1; size < 40; ++size) {
        std::vector<u8> map(size, u8{2});
        if (size > 20) std::fill_n(map.begin(), 11, u8{0});
        EXPECT_TRUE(HoldsOnly(SWhole{size}, map.data(), usable)) << size;
        for (u32 i = 0; i < size; ++i) {
            for (const u8 stranger : std::initializer_list<u8>{1, 7, 8, 255}) {
                std::vector<u8> wrong = map;
                wrong[i] = stranger;
                EXPECT_FALSE(HoldsOnly(SWhole{size}, wrong.data(), usable)) << size << ' ' << i;
                EXPECT_EQ(HoldsOnly(SWhole{i}, wrong.data(), usable), true);
                EXPECT_FALSE(HoldsOnly(SIndexList{&i, 1}, wrong.data(), usable));
            }
        }
    }
    EXPECT_TRUE(HoldsOnly(SWhole{9}, nullptr, usable)) << "no map means preset 0";
    EXPECT_FALSE(HoldsOnly(SWhole{9}, nullptr, {false, true}));
}

}  // namespace
}  // namespace ovix::reduce
