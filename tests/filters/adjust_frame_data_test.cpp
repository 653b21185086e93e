#include "reduce/filters/adjust_frame_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "core/pixel_types.h"
#include "reduce/filters/frame_types.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using test::Bytes;

struct SFlags {
    bool deinterlace, mirror, flip;
};
/// The result of an adjustment between buffers of exactly their size, both at odd addresses.
Bytes Adjust(const Bytes& source, std::size_t size, i32 width, i32 height, GUID type, SFlags flags = {}, RECT rect = {},
             i32 shift = 0, i32 mask = -1) {
    const test::CExact from(source), to(Bytes(size, 0xEE));
    AdjustFrameData(to.get(), from.get(), width, height, type, rect, shift, mask, flags.deinterlace, flags.mirror,
                    flags.flip);
    return {to.get(), to.get() + size};
}

TEST(AdjustFrameData, CountsAreTakenByTheTableOfTheFlags) {
    // Size, margins, mirrored, flipped; numbers of source words, found by hand.
    const std::tuple<i32, i32, RECT, bool, bool, std::vector<u16>> cases[] = {
        {2, 2, {}, true, true, {3, 2, 1, 0}},
        {3, 2, {}, true, false, {2, 1, 0, 5, 4, 3}},
        {3, 2, {}, false, true, {3, 4, 5, 0, 1, 2}},
        {2, 2, {1, 1, 1, 99}, false, false, {5, 6, 9, 10}},
        {3, 1, {0, 2, 4, 0}, false, false, {14, 15, 16}},
        {2, 2, {1, 0, 1, 0}, false, true, {3, 4, 1, 2}},  // turned lines have no margins
        {2, 2, {1, 1, 5, 0}, true, false, {2, 1, 4, 3}},
        {0, 3, {}, false, false, {}},
        {3, -1, {}, true, true, {}}};
    std::vector<u16> source(24);
    std::iota(source.begin(), source.end(), u16{0});
    for (const auto& [width, height, rect, mirror, flip, words] : cases) {
        for (const bool fields : {false, true}) {
            EXPECT_EQ(Adjust(test::PixelBytes(source), 2 * words.size(), width, height, frame_types::kF7M0,
                             {fields, mirror, flip}, rect),
                      test::PixelBytes(words))
                << testing::PrintToString(words);
        }
        const SAdjustedWords read = AdjustedWords(width, height, rect, mirror, flip);
        EXPECT_EQ(read.first, words.empty() ? 0 : *std::min_element(words.begin(), words.end()));
        EXPECT_EQ(read.end, words.empty() ? 0 : *std::max_element(words.begin(), words.end()) + 1);
    }
    // Lines 1 and 2 of a flipped picture with a column at its left: words 1, 2 and -1, 0.
    EXPECT_EQ(AdjustedWords(2, 2, {1, 1, 0, 0}, false, true).first, -1);
}

TEST(AdjustFrameData, CountsAreShiftedThenMasked) {
    const std::vector<u16> source = test::Ramp(40);
    for (const i32 shift : {0, 1, -1, 2, -2, 7, -15, 16, 31, 32, 33, -64, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        for (const u32 mask : {0xFFFFFFFFu, 0x3FFFu, 0xFFFF0001u, 0u}) {
            const u32 factor = std::abs(i64{shift}) < 16 ? 1u << std::abs(shift) : 0;
            std::vector<u16> expected;
            for (const u16 word : source) expected.push_back(static_cast<u16>(word * factor % 65536 & mask));
            EXPECT_EQ(Adjust(test::PixelBytes(source), 80, 8, 5, rootIRType, {}, {}, shift, static_cast<i32>(mask)),
                      test::PixelBytes(expected))
                << shift << " " << mask;
        }
    }
}

TEST(AdjustFrameData, PixelsOf24BitsGoAsOne) {
    for (u32 bits = 0; bits < 8; ++bits) {
        const SFlags flags{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
        for (const auto& [width, height] : {std::pair{1u, 1u}, {4u, 1u}, {1u, 5u}, {5u, 4u}, {5u, 3u}}) {
            Bytes source(3 * width * height), expected(source.size());
            for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<u8>(7 * i + i / 64);
            for (u32 i = 0; i < width * height; ++i) {
                const u32 column = flags.mirror ? width - 1 - i % width : i % width;
                u32 line = flags.flip ? height - 1 - i / width : i / width;
                if (flags.deinterlace) line = line % 2 ? (height + 1) / 2 + line / 2 : line / 2;
                std::copy_n(&source[3 * (line * width + column)], 3, &expected[3 * i]);
            }
            EXPECT_EQ(Adjust(source, source.size(), static_cast<i32>(width), static_cast<i32>(height), rootRGB24Type,
                             flags, {3, 4, 5, 6}, 2, 0),
                      expected)
                << width << "x" << height << " " << bits;
        }
    }
}

/// The formula of the conversion, in the least of words.
Bytes Colour(int y, int u, int v) {
    const int c = 298 * (y - 16) + 128, d = u - 128, e = v - 128;
    const auto clip = [](int sum) { return static_cast<u8>(std::clamp(sum >> 8, 0, 255)); };
    return {clip(c + 409 * e), clip(c - 100 * d - 208 * e), clip(c + 516 * d)};
}

TEST(AdjustFrameData, YuvLinesGoToTheirPlaces) {
    const std::pair<SFlags, std::vector<u32>> cases[] = {// lines of the result, for each source line
                                                         {{false, false, false}, {0, 1, 2, 3, 4}},
                                                         {{false, true, false}, {0, 1, 2, 3, 4}},
                                                         {{false, false, true}, {4, 3, 2, 1, 0}},
                                                         {{false, true, true}, {3, 2, 1, 0}},
                                                         {{true, false, false}, {0, 2, 4, 1, 3}},
                                                         {{true, false, false}, {0, 2, 1, 3}},
                                                         {{true, true, false}, {0}},
                                                         {{true, false, true}, {3, 1, 4, 2, 0}},
                                                         {{true, true, true}, {2, 0, 3, 1}},
                                                         {{true, true, true}, {0}}};
    for (const u32 width : {4u, 5u}) {
        for (const auto& [flags, places] : cases) {
            const u32 lines = static_cast<u32>(places.size());
            Bytes source(2 * width * lines), expected(3 * width * lines, 0xEE);
            for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<u8>(37 * i + 20);
            // Untouched, the whole picture is one run, and pairs go on from line to line.
            const bool oneRun = !flags.deinterlace && !flags.mirror && !flags.flip;
            const u32 run = oneRun ? width * lines : width;
            for (u32 line = 0; line < width * lines / run; ++line) {
                for (u32 pixel = 0; pixel < run / 2 * 2; ++pixel) {
                    const u8* pair = &source[2 * width * line + pixel / 2 * 4];
                    const Bytes rgb = Colour(pair[pixel % 2 ? 2 : 0], pair[1], pair[3]);
                    const u32 column = flags.mirror ? run - 1 - pixel : pixel;
                    std::copy_n(rgb.begin(), 3, &expected[3 * (places[line] * width + column)]);
                }
            }
            EXPECT_EQ(Adjust(source, expected.size(), static_cast<i32>(width), static_cast<i32>(lines), rootYUVType,
                             flags, {1, 2, 3, 4}, 5, 0),
                      expected)
                << flags.deinterlace << flags.mirror << flags.flip << lines << " of width " << width;
        }
    }
    for (const GUID& other : {frame_types::kUYVY, CGUID::Empty})
        EXPECT_EQ(Adjust(Bytes(8, 1), 12, 2, 2, other), Bytes(12, 0xEE));
}

}  // namespace
}  // namespace ovix::reduce
