#include "reduce/filters/adjust_frame_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "core/pixel_types.h"
#include "reduce/filters/generic_pixel_types.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using test::Bytes;

struct SFlags {
    bool deinterlace, mirror, flip;
};
constexpr SFlags kAllFlags[] = {{false, false, false}, {false, false, true}, {false, true, false}, {false, true, true},
                                {true, false, false},  {true, false, true},  {true, true, false},  {true, true, true}};

/// The result of an adjustment between buffers of exactly their size, both at odd addresses.
Bytes Adjust(const Bytes& source, std::size_t size, i32 width, i32 height, GUID type, SFlags flags = {}, RECT rect = {},
             i32 shift = 0, i32 mask = -1) {
    const auto from = std::make_unique<u8[]>(source.size() + 1), to = std::make_unique<u8[]>(size + 1);
    std::copy(source.begin(), source.end(), from.get() + 1);
    std::fill_n(to.get(), size + 1, u8{0xEE});
    AdjustFrameData(to.get() + 1, from.get() + 1, width, height, type, rect, shift, mask, flags.deinterlace,
                    flags.mirror, flags.flip);
    return {to.get() + 1, to.get() + 1 + size};
}

TEST(AdjustFrameData, CountsAreTakenByTheTableOfTheFlags) {
    // Numbers of source words, found by hand.
    struct SCase {
        const char* name;
        i32 width, height;
        RECT rect;
        bool mirror, flip;
        std::vector<u32> words;
    };
    const SCase cases[] = {
        {"turned", 2, 2, {}, true, true, {3, 2, 1, 0}},
        {"mirrored", 3, 2, {}, true, false, {2, 1, 0, 5, 4, 3}},
        {"flipped", 3, 2, {}, false, true, {3, 4, 5, 0, 1, 2}},
        {"margins", 2, 2, {1, 1, 1, 99}, false, false, {5, 6, 9, 10}},
        {"margins at one side", 3, 1, {0, 2, 4, 0}, false, false, {14, 15, 16}},
        {"flipped lines have no margins", 2, 2, {1, 0, 1, 0}, false, true, {3, 4, 1, 2}},
        {"nor have mirrored ones", 2, 2, {1, 1, 5, 0}, true, false, {2, 1, 4, 3}},
        {"nothing", 0, 3, {}, false, false, {}},
        {"nothing", 3, -1, {}, true, true, {}},
    };
    for (const SCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<u16> source = test::Ramp(24), expected;
        for (const u32 word : c.words) expected.push_back(source[word]);
        const SAdjustedWords read = AdjustedWords(c.width, c.height, c.rect, c.mirror, c.flip);
        EXPECT_EQ(read.first, c.words.empty() ? 0 : *std::min_element(c.words.begin(), c.words.end()));
        EXPECT_EQ(read.end, c.words.empty() ? 0 : *std::max_element(c.words.begin(), c.words.end()) + 1);
        const Bytes bytes = test::PixelBytes(source);
        for (const bool fields : {false, true}) {
            EXPECT_EQ(Adjust(bytes, 2 * expected.size(), c.width, c.height, generic::kF7M0, {fields, c.mirror, c.flip},
                             c.rect),
                      test::PixelBytes(expected));
        }
    }
}

TEST(AdjustFrameData, WordsAheadOfTheFrameAreTold) {
    // Lines 1 and 2 of a flipped picture of 2 x 2 with a column at its left: words 1, 2 and -1, 0.
    EXPECT_EQ(AdjustedWords(2, 2, {1, 1, 0, 0}, false, true).first, -1);
    EXPECT_EQ(AdjustedWords(65535, 16384, {65535, 65535, 65535, 0}, false, false).end,
              65535LL * 3 * (65535 + 16383) + 2 * 65535);
}

TEST(AdjustFrameData, CountsAreShiftedThenMasked) {
    const std::vector<u16> source = test::Ramp(40);
    for (const i32 shift : {0, 1, -1, 2, -2, 7, 15, -15, 16, 31, 32, 33, -64, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
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
    for (const SFlags& flags : kAllFlags) {
        for (const auto& [width, height] : {std::pair{1, 1}, {4, 1}, {1, 5}, {5, 4}, {4, 5}, {5, 3}}) {
            Bytes source(static_cast<std::size_t>(3 * width * height)), expected(source.size());
            for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<u8>(7 * i + i / 64);
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const int wanted = flags.flip ? height - 1 - y : y;
                    const int field = wanted % 2 ? (height + 1) / 2 + wanted / 2 : wanted / 2;
                    const int line = flags.deinterlace ? field : wanted;
                    const int column = flags.mirror ? width - 1 - x : x;
                    std::copy_n(&source[static_cast<std::size_t>(3 * (line * width + column))], 3,
                                &expected[static_cast<std::size_t>(3 * (y * width + x))]);
                }
            }
            EXPECT_EQ(Adjust(source, source.size(), width, height, rootRGB24Type, flags, {3, 4, 5, 6}, 2, 0), expected)
                << width << "x" << height << flags.deinterlace << flags.mirror << flags.flip;
        }
    }
}

/// The formula of the conversion, in the least of words.
Bytes Colour(int y, int u, int v) {
    const int c = 298 * (y - 16) + 128, d = u - 128, e = v - 128;
    const int sums[] = {c + 409 * e, c - 100 * d - 208 * e, c + 516 * d};
    Bytes rgb;
    for (const int sum : sums) rgb.push_back(static_cast<u8>(std::clamp(sum >> 8, 0, 255)));
    return rgb;
}

TEST(AdjustFrameData, YuvLinesGoToTheirPlaces) {
    struct SCase {
        SFlags flags;
        std::vector<u32> places;  ///< lines of the result, for each source line
    };
    const SCase cases[] = {
        {{false, false, false}, {0, 1, 2, 3, 4}},
        {{false, true, false}, {0, 1, 2, 3, 4}},
        {{false, false, true}, {4, 3, 2, 1, 0}},
        {{false, true, true}, {3, 2, 1, 0}},
        {{true, false, false}, {0, 2, 4, 1, 3}},
        {{true, false, false}, {0, 2, 1, 3}},
        {{true, true, false}, {0}},
        {{true, false, true}, {3, 1, 4, 2, 0}},
        {{true, true, true}, {2, 0, 3, 1}},
        {{true, true, true}, {0}},
        {{true, false, true}, {0, 1}},
    };
    for (const i32 width : {4, 5}) {
        for (const SCase& c : cases) {
            SCOPED_TRACE(testing::Message() << &c - cases << " of width " << width);
            const std::size_t lines = c.places.size(), columns = static_cast<std::size_t>(width);
            Bytes source(2 * columns * lines), expected(3 * columns * lines, 0xEE);
            for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<u8>(37 * i + 20);
            // Untouched, the whole picture is one run, and pairs go on from line to line.
            const bool oneRun = !c.flags.deinterlace && !c.flags.mirror && !c.flags.flip;
            const std::size_t run = oneRun ? columns * lines : columns;
            for (std::size_t line = 0; line < (oneRun ? 1 : lines); ++line) {
                for (std::size_t pixel = 0; pixel < run / 2 * 2; ++pixel) {
                    const u8* pair = &source[2 * columns * line + pixel / 2 * 4];
                    const std::size_t column = c.flags.mirror ? run - 1 - pixel : pixel;
                    const Bytes rgb = Colour(pair[pixel % 2 ? 2 : 0], pair[1], pair[3]);
                    std::copy(rgb.begin(), rgb.end(),
                              expected.begin() + static_cast<long>(3 * (c.places[line] * columns + column)));
                }
            }
            EXPECT_EQ(Adjust(source, expected.size(), width, static_cast<i32>(lines), rootYUVType, c.flags,
                             {1, 2, 3, 4}, 5, 0),
                      expected);
        }
    }
}

TEST(AdjustFrameData, OtherTypesAreLeftAlone) {
    for (const GUID& type : {generic::kUYVY, test::kK410YUY2, CGUID::Empty}) {
        EXPECT_EQ(Adjust(Bytes(8, 1), 12, 2, 2, type), Bytes(12, 0xEE));
    }
}

}  // namespace
}  // namespace ovix::reduce
