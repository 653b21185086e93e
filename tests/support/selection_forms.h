#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/typed_data.h"

namespace ovix::test {

/// An image of 6 x 4 counts, and the ten buffer forms of a conversion over it.
struct SFormsImage {
    static constexpr u16 kWidth = 6, kHeight = 4;
    u16 counts[kWidth * kHeight];

    SFormsImage() {
        for (u32 i = 0; i < std::size(counts); ++i) counts[i] = static_cast<u16>(10000 + 100 * i);
    }

    /// Calls `convert` with the arguments of each form and demands the values `expected[count]` of the pixels that the
    /// form selects, or, where `mapsTakeTheFirst` and there is a preset map, of as many from the start of the buffer.
    void Check(auto convert, const std::vector<float>& expected, bool mapsTakeTheFirst) {
        u8 mask[8 * kHeight] = {};
        mask[1 * 8 + 2] = mask[2 * 8 + 4] = mask[3 * 8 + 1] = 1;  // its stride is 8; the last lies outside the area
        const u8 map[kWidth * kHeight] = {2, 2, 2};
        const u32 list[] = {23, 0, 7};
        const TArray<reduce::SScanLine> lines{{3, 4, 5}, {0, 1, 1}};
        const reduce::SArea area{1, 2, 2, 4};
        double out[9];
        u8 status[9];
        const STypedData in{counts, UInt16}, to{out, Flt64};

        const auto check = [&](const char* form, std::vector<u32> pixels, bool withMap, auto... arguments) {
            std::fill_n(out, 9, -1.0);
            std::fill_n(status, 9, u8{99});
            EXPECT_TRUE(convert(arguments...)) << form;
            for (u32 i = 0; i < pixels.size(); ++i) {
                const u32 pixel = withMap && mapsTakeTheFirst ? i : pixels[i];
                EXPECT_EQ(out[i], expected[counts[pixel]]) << form << (withMap ? " with map, " : ", ") << i;
                EXPECT_EQ(status[i], 0) << form;
            }
            EXPECT_EQ(out[pixels.size()], -1.0) << form;
            EXPECT_EQ(status[pixels.size()], 99) << form;
        };
        const auto checkBoth = [&](const char* form, const std::vector<u32>& pixels, auto... arguments) {
            check(form, pixels, false, in, arguments...);
            check(form, pixels, true, in, map, arguments...);
        };
        const TArray<reduce::SScanLine>& region = lines;
        checkBoth("whole", {0, 1}, to, status, 2u);
        checkBoth("list", {23, 0, 7}, list, 3u, to, status);
        checkBoth("area", {8, 9, 10, 14, 15, 16}, kWidth, kHeight, area, to, status);
        checkBoth("lines", {22, 23, 1}, kWidth, kHeight, region, to, status);
        checkBoth("mask", {8, 16}, kWidth, kHeight, area, mask, 8u, to, status);
        checkBoth("nothing", {}, kWidth, kHeight, reduce::SArea{2, 0, 1, 5}, to, status);
    }
};

}  // namespace ovix::test
