#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "apps/ovix/plot/plot_data.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::NanSensitiveDoubleEq;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// 4 x 3 pixels, 0 to 11; one is no number, one bears a flag.
measure::CFrame Frame() {
    measure::CFrame frame;
    frame.width = 4;
    frame.height = 3;
    for (int i = 0; i < 12; ++i) frame.values.push_back(static_cast<float>(i));
    frame.status.resize(12);
    frame.values[6] = NAN;
    frame.status[11] = 4;
    return frame;
}

TEST(PlotData, ReadsGoodPixels) {
    const measure::CFrame frame = Frame();
    const auto profile = [&](int x0, int y0, int x1, int y1) {
        return ProfileOf(frame, {{"l", measure::EShape::Line, {{x0, y0}, {x1, y1}}}, frame.width, frame.height});
    };
    EXPECT_THAT(profile(0, 0, 3, 0), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(profile(3, 2, 3, 0), ElementsAre(NanSensitiveDoubleEq(kNaN), 7, 3));
    // Rows 0, 2/3, 4/3 and 2 of columns 0 to 3; back the same pixels.
    EXPECT_THAT(profile(0, 0, 3, 2), ElementsAre(0, 5, NanSensitiveDoubleEq(kNaN), NanSensitiveDoubleEq(kNaN)));
    // Row 0.5 is the lower one.
    EXPECT_THAT(profile(0, 0, 2, 1), ElementsAre(0, 5, NanSensitiveDoubleEq(kNaN)));
    EXPECT_THAT(profile(2, 0, 2, 0), ElementsAre(2));
    const std::vector<float> values{3, -1, 7};
    for (const auto& [figure, value] : {std::pair{EFigure::Mean, 3}, {EFigure::Highest, 7}, {EFigure::Lowest, -1}})
        EXPECT_EQ(FigureOf(values, figure), value);
    EXPECT_TRUE(std::isnan(FigureOf({}, EFigure::Mean)));
}

TEST(PlotData, HistogramsHaveCommonBins) {
    SPlot plot;
    PutHistogram(plot, {"a", "b"}, {{0, 0.5f, 1, 127.9f}, {64, 128}});  // bins 1 wide
    ASSERT_EQ(plot.x.size(), 129u);
    EXPECT_EQ(plot.x.front(), 0);
    EXPECT_EQ(plot.x.back(), 128);
    const auto filled = [](const SCurve& curve) {
        std::vector<std::pair<std::size_t, double>> bins;
        for (std::size_t i = 0; i < curve.values.size(); ++i)
            if (curve.values[i] > 0) bins.push_back({i, curve.values[i]});
        return bins;
    };
    using Pair = std::pair<std::size_t, double>;
    EXPECT_THAT(filled(plot.curves[0]), ElementsAre(Pair{0, 2}, Pair{1, 1}, Pair{127, 1}));
    EXPECT_THAT(filled(plot.curves[1]), ElementsAre(Pair{64, 1}, Pair{127, 1}));
}

/// Whether a pixel of the drawing has the colour, edges of lines aside, which are smoothed.
bool IsAt(const SPngRows& rows, double x, double y, SColour colour) {
    const auto column = static_cast<std::size_t>(x), row = static_cast<std::size_t>(y);
    const u8* pixel = rows.bytes.data() + row * (1 + 3 * std::size_t{rows.width}) + 1 + 3 * column;
    return std::abs(pixel[0] - colour.red) + std::abs(pixel[1] - colour.green) + std::abs(pixel[2] - colour.blue) < 100;
}

TEST(PlotDrawing, CurvesGoThroughTheirValuesAndLeaveGaps) {
    const SPlot plot{.title = "</desc> \xFF",
                     .xLabel = "Frame",
                     .yLabel = "Temperature",
                     .x = {0, 1, 2, 3, 4, 5},
                     .curves = {{"a", {20, 20, 20, kNaN, 20, 20}}, {"b", {10, 10, 10, 40, 40, 40}}}};
    const SPlotFrame field = FrameOf(plot);
    EXPECT_LT(field.lowest, 10);
    EXPECT_GT(field.highest, 40);
    const SPngRows rows = PlotPixels(plot);
    const SColour first = ColourOf(0x0072B2), second = ColourOf(0xD55E00);
    const auto is = [&](double place, double value, SColour colour) {
        return IsAt(rows, field.XOf(place), field.YOf(value), colour);
    };
    EXPECT_TRUE(is(0.5, 20, first) && is(4.5, 20, first));
    EXPECT_FALSE(is(3.4, 20, first) || is(0.5, 21, first));  // beside the gap, and beside the curve
    EXPECT_TRUE(is(1.5, 10, second) && is(4.5, 40, second) && is(0.4, 30, ColourOf(0xFFFFFF)));
    const std::string svg = PlotSvg(plot, R"({"a": "</desc>&"})");
    EXPECT_THAT(svg, testing::HasSubstr("<desc>{\"a\": \"&lt;/desc>&amp;\"}</desc>"));
    EXPECT_THAT(svg, testing::EndsWith("</svg>\n"));
}

TEST(PlotCommand, DrawsWhatIsAskedForAndRefusesWhatMeansNothing) {
    CToolFolder folder;
    folder.Do({"synth", "--family", "Plover", "--size", "64x48", "--count", "13", "-o", "f.raw"});
    const std::tuple<Arguments, int, const char*> cases[] = {
        {{"-o", "t.svg", "--roi", "a=1,1,9,9", "--roi", "2,2,9,9"}, 0, "2 curves of 13 frames"},
        {{"-o", "p.png", "--kind", "profile", "--line", "0,0,63,47", "--frames", "0,12"}, 0, "2 curves of 2 frames"},
        {{"-o", "h.png", "--kind", "histogram", "--frames", "3"}, 0, "1 curve of 1 frame"},
        {{"-o", "h.png", "--frames", "3"}, 4, "h.png"},
        {{"-o", "x.png", "--kind", "histogram"}, 2, "at most 12 curves"},
        {{"-o", "x.pdf"}, 2, ".png or .svg"},
        {{"-o", "x.png", "--kind", "profile"}, 2, "--line"},
        {{"-o", "x.png", "--line", "0,0,1,1"}, 2, "--line"},
        {{"-o", "x.png", "--kind", "profile", "--line", "0,0,64,1"}, 2, "64 x 48"},
        {{"-o", "x.png", "--kind", "profile", "--line", "0,0,1"}, 2, "--line"},
        {{"-o", "x.png", "--kind", "histogram", "--figure", "max", "--frames", "1"}, 2, "--figure"},
    };
    for (const auto& [more, status, error] : cases) {
        const auto run = folder.Run(Arguments{"plot", "f.raw"} + FramesOf("Plover IR (F7M0)") + more);
        EXPECT_EQ(run.status, status) << run.error;
        EXPECT_THAT(run.error, testing::HasSubstr(error));
    }
    EXPECT_THAT(folder.Names(), ElementsAre("f.raw", "h.png", "p.png", "t.svg"));
    // Frames 20 ms apart.
    EXPECT_THAT(ReadText(folder.At("t.svg")), testing::HasSubstr("Time after the first frame (s)"));
}

}  // namespace
}  // namespace ovix::app
