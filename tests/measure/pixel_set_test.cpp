// Regions of any shape, drawn by hand, and the distributions of their values by their definitions.

#include "measure/frame/pixel_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "measure/error.h"
#include "measure/frame/distribution.h"
#include "measure/frame/pixel_figures.h"
#include "support/text.h"

namespace ovix::measure {
namespace {

using test::Text;

/// The six lines of a frame of 8 pixels, with a # for each pixel of the shape.
std::string Drawn(const CPixelSet& pixels) {
    std::string picture = "........ ........ ........ ........ ........ ........";
    for (const reduce::SScanLine& line : pixels.Lines()) {
        for (u16 x = line.left; x <= line.right; ++x) {
            EXPECT_EQ(picture[line.row * 9u + x], '.') << "a pixel twice";
            picture[line.row * 9u + x] = '#';
        }
    }
    EXPECT_EQ(std::ranges::count(picture, '#'), pixels.Count());
    return picture;
}

TEST(PixelSet, ShapesHoldThePixelsThatTheirDefinitionsName) {
    const std::pair<SShape, const char*> cases[] = {
        {{"spot", EShape::Spot, {{7, 5}}}, "........ ........ ........ ........ ........ .......#"},
        {{"steep", EShape::Line, {{1, 0}, {3, 4}}}, ".#...... ..#..... ..#..... ...#.... ...#.... ........"},
        {{"circle", EShape::Circle, {{2, 2}}, 2}, "..#..... .###.... #####... .###.... ..#..... ........"},
        {{"over the edge", EShape::Circle, {{7, 0}}, 1.5}, "......## ......## ........ ........ ........ ........"},
        {{"triangle", EShape::Polygon, {{0, 0}, {4, 0}, {0, 4}}},
         "#####... ####.... ###..... ##...... #....... ........"},
        {{"notched", EShape::Polygon, {{0, 0}, {6, 0}, {6, 4}, {3, 1}, {0, 4}}},
         "#######. #######. ###.###. ##...##. #.....#. ........"},
        {SShape::Rectangle("box", 6, 4, 2, 2), "........ ........ ........ ........ ......## ......##"}};
    for (const auto& [shape, picture] : cases) EXPECT_EQ(Drawn(CPixelSet(shape, 8, 6)), picture) << shape.name;
    // The other way round the pixels are the same number, from the other end on.
    const auto back = LinePixels({3, 4}, {1, 0});
    EXPECT_TRUE(back.size() == 5 && back.front() == (SPoint{3, 4}));
    const SShape bad[] = {{"", EShape::Spot, {{8, 0}}},
                          {"", EShape::Line, {{0, 0}}},
                          {"", EShape::Polygon, {{0, 0}, {1, 1}}},
                          {"", EShape::Circle, {{0, 0}}, -1},
                          {"", EShape::Circle, {{0, 0}}, std::nan("")}};
    for (const SShape& shape : bad) EXPECT_THROW(CPixelSet(shape, 8, 6), CError);
}

TEST(PixelSet, FiguresAreOfItsPixelsAndEachOfThemCountsUnderOneFlag) {
    CFrame frame;
    frame.width = 4;
    frame.height = 2;
    frame.values = {1, 2, 3, 99, 5, 6, 7, -50};
    frame.status = {0, 0, 1 | 4, 8, 0, 2, 0, 32};
    const CPixelSet ell({"ell", EShape::Polygon, {{0, 0}, {3, 0}, {3, 1}}}, 4, 2);  // all but 5 and 6
    const SPixelFigures counted = FiguresOf(frame, ell);
    EXPECT_EQ(Text(ell.Count(), counted.pixels, counted.count), "6 6 5 ");  // the pixel of 99 never counts
    EXPECT_TRUE(counted.minimum == -50 && counted.minimumPosition == (SPoint{3, 1}));
    EXPECT_EQ(std::accumulate(counted.byHighestFlag.begin(), counted.byHighestFlag.end(), counted.good), ell.Count());
    EXPECT_EQ(Text(counted.byHighestFlag[2], counted.byHighestFlag[0], counted.flagged[0]), "1 0 1 ");

    const CPixelSet all(SShape::Rectangle("all", 0, 0, 4, 2), 4, 2);
    const SPixelFigures good = FiguresOf(frame, all, EPixels::Good);
    EXPECT_EQ(Text(good.count, good.good, good.minimum, good.maximum, good.mean), "4 4 1 7 3.75 ");
    EXPECT_EQ(good.byHighestFlag[5], 1u);  // of all pixels, not of the good ones
    EXPECT_EQ(ValuesOf(frame, all, EPixels::Good), (std::vector<float>{1, 2, 5, 7}));
    EXPECT_EQ(ValuesOf(frame, all).size(), 7u);
    EXPECT_THROW(FiguresOf(frame, CPixelSet({"", EShape::Spot, {{0, 0}}}, 5, 2)), CError);
}

TEST(Distribution, PercentilesAndStepsFollowTheirDefinitions) {
    const std::vector<float> sorted = {1, 2, 4, 8, 16};
    const std::pair<double, double> cases[] = {{0, 1}, {25, 2}, {50, 4}, {90, 12.8}, {100, 16}, {12.5, 1.5}};
    for (const auto& [percent, value] : cases) EXPECT_DOUBLE_EQ(Percentile(sorted, percent), value) << percent;
    EXPECT_TRUE(std::isnan(Percentile({}, 50)));

    const SHistogram own = MakeHistogram(sorted, 3);
    EXPECT_TRUE(own.counts == (std::vector<u64>{3, 1, 1}) && own.Edge(1) == 6);
    const std::vector<float> values = {-1, 0, 9.99f, 10, 20, 20.5f, NAN};
    const SHistogram told = MakeHistogram(values, 2, 0, 20);
    EXPECT_TRUE(told.counts == (std::vector<u64>{2, 2}) && told.below == 1 && told.above == 1);
    EXPECT_EQ(MakeHistogram(std::vector<float>{3, 3}, 10).counts, (std::vector<u64>{2}));
}

}  // namespace
}  // namespace ovix::measure
