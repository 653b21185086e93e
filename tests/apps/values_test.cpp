#include "apps/ovix/text/values.h"

#include "app_files.h"
#include "apps/ovix/cli/frame_selection.h"
#include "apps/ovix/cli/regions.h"
#include "apps/ovix/text/text_table.h"

namespace ovix::app {
namespace {

using namespace test;

void ExpectUsageFault(const std::string& text, const auto& parse) {
    std::string line;
    EXPECT_EQ(ExitOf(parse, &line), ExitUsage) << text;
    EXPECT_NE(line.find("--x"), std::string::npos) << line;
}

TEST(Values, TemperaturesOfAllScalesComeOutInKelvin) {
    const std::pair<const char*, float> cases[] = {
        {"20C", 293.15f},     {"20 °C", 293.15f}, {"-40c", 233.15f},    {"-40F", 233.15f},   {"212f", 373.15f},
        {"293.15K", 293.15f}, {"0k", 0.0f},       {"491.67R", 273.15f}, {"2.5e1C", 298.15f}, {"-273.15C", 0.0f}};
    for (const auto& [text, kelvin] : cases) EXPECT_FLOAT_EQ(ParseTemperature("--x", text), kelvin) << text;
    for (const char* bad :
         {"", "C", "20", "20CC", "+20C", "nanC", "infK", "-1K", "-274C", "1,5C", "20X", "0x10K", "1e60K"})
        ExpectUsageFault(bad, [&] { ParseTemperature("--x", bad); });
}

TEST(Values, SizesAndRangesAreHeldAgainstTheirLimits) {
    EXPECT_EQ(ParseSize("--x", "640x480"), (std::pair<u16, u16>{640, 480}));
    EXPECT_EQ(ParseSize("--x", "65535x1"), (std::pair<u16, u16>{65535, 1}));
    for (const char* bad : {"", "640", "640x", "x480", "0x480", "640x0", "65536x1", "65535x65535", "640X480",
                            "640x480x3", "-1x5", "640 x 480", "640*480"})
        ExpectUsageFault(bad, [&] { ParseSize("--x", bad); });

    EXPECT_EQ(ParseRange("--x", "-10,35.5"), (std::pair<float, float>{-10.0f, 35.5f}));
    for (const char* bad :
         {"", "10", "10,", ",10", "10,10", "20,10", "a,b", "nan,1", "0,inf", "1,2,3", "1,1.00000001", "0,1e40"})
        ExpectUsageFault(bad, [&] { ParseRange("--x", bad); });

    EXPECT_FLOAT_EQ(ParseWithin("--x", "0.95", 0, 1), 0.95f);
    EXPECT_EQ(ParseWithin("--x", "0.001", 0.001f, 1), 0.001f);
    for (const char* bad : {"", "1.01", "-0.1", "95%", "0,95", "nan"})
        ExpectUsageFault(bad, [&] { ParseWithin("--x", bad, 0, 1); });
}

TEST(Values, RegionsLieInsideTheImageUnderNamesOfTheirOwn) {
    const auto parse = [](const std::vector<std::string>& texts) {
        return PixelsOf(ParseShapes("--roi", texts), 640, 480);
    };
    const auto regions = parse({"0,0,640,480", "bearing=10,20,1,2", "circle:639,479,2.5", "edge=polygon:0,0,4,0,4,4"});
    const char* const names[] = {"roi1", "bearing", "roi3", "edge"};
    const u32 pixels[] = {640 * 480, 2, 8, 15};
    ASSERT_EQ(regions.size(), std::size(names));
    for (std::size_t i = 0; i < regions.size(); ++i) {
        EXPECT_EQ(regions[i].Shape().name, names[i]);
        EXPECT_EQ(regions[i].Count(), pixels[i]);
    }
    EXPECT_EQ(regions[1].Shape().points, (std::vector<SPoint>{{10, 20}, {10, 21}}));
    EXPECT_EQ(ParseLines("--x", {"a=0,0,1,1"})[0].kind, measure::EShape::Line);

    const std::vector<std::string> bad[] = {{"0,0,641,480"},
                                            {"640,0,1,1"},
                                            {"0,0,0,5"},
                                            {"0,0,5,0"},
                                            {"1,2,3"},
                                            {"1,2,3,4,5"},
                                            {"=1,2,3,4"},
                                            {"a=b=1,2,3,4"},
                                            {"-1,0,5,5"},
                                            {"65535,0,65535,1"},
                                            {"a=1,1,2,2", "a=3,3,2,2"},
                                            {"roi2=0,0,1,1", "0,0,1,1"}};
    for (const auto& texts : bad) EXPECT_EQ(ExitOf([&] { parse(texts); }), ExitUsage) << texts[0];
}

TEST(Suggestion, FindsTheWordThatWasMeantAndNoneThatWasNot) {
    const std::string words[] = {"convert", "formats", "info", "stats", "K410 IR (GigE)", "K410 IR (GigE, Flipped)"};
    const std::pair<const char*, const char*> cases[] = {{"covnert", "convert"},
                                                         {"form", "formats"},
                                                         {"INFO", "info"},
                                                         {"stat", "stats"},
                                                         {"k410 ir gige", "K410 IR (GigE)"},
                                                         {"zzz", ""},
                                                         {"dump.raw", ""},
                                                         {"x", ""}};
    for (const auto& [text, nearest] : cases) EXPECT_EQ(measure::NearestWord(text, words), nearest) << text;
}

std::vector<u64> Chosen(const measure::CFrameNumbers& numbers) {
    std::vector<u64> chosen;
    for (u64 n = 0; n < numbers.Count(); ++n) chosen.push_back(numbers[n]);
    return chosen;
}

TEST(FrameSelection, ReadsSinglesRangesStepsAndTheEnd) {
    const std::pair<const char*, std::vector<u64>> cases[] = {
        {"0", {0}},           {"9", {9}},
        {"-1", {9}},          {"-10", {0}},
        {"2-4", {2, 3, 4}},   {"2:4", {2, 3, 4}},
        {"3-3", {3}},         {"0-9x4", {0, 4, 8}},
        {"1-4x3", {1, 4}},    {"0-9x100", {0}},
        {"-3--1", {7, 8, 9}}, {"-3:-1", {7, 8, 9}},
        {"8--1", {8, 9}},     {"5,0-1,5,-1", {5, 0, 1, 5, 9}},
        {"7x2", {7}},
    };
    for (const auto& [text, frames] : cases) EXPECT_EQ(Chosen(CFrameSelection(text).Of(10)), frames) << text;
    EXPECT_EQ(CFrameSelection("0--1x1000").Of(u64{1} << 40).Count(), ((u64{1} << 40) - 1) / 1000 + 1);
}

TEST(FrameSelection, RefusesOtherTextsAndFramesThatAreNotThere) {
    const char* cases[] = {"",     ",",    "a",  "1,",  "1-", "-",   "1-2-3", "1x0", "1x-1", "1 - 2",
                           "1..2", "1-2x", "+1", "1.5", "10", "-11", "5-10",  "4-2", "-1-0", "99999999999999999999"};
    for (const char* text : cases) EXPECT_EQ(ExitOf([&] { CFrameSelection(text).Of(10); }), ExitUsage) << text;
    EXPECT_EQ(Chosen(CFrameSelection("0x10").Of(10)), std::vector<u64>{0});  // frame 0 in steps of ten
}

TEST(FrameSelection, OfAPipeTakesNumbersThatRise) {
    EXPECT_EQ(Chosen(CFrameSelection("2-6x2,9").InOrder()), (std::vector<u64>{2, 4, 6, 9}));
    for (const char* text : {"-1", "0--1", "5,3", "2-4,4"})
        EXPECT_EQ(ExitOf([&] { CFrameSelection(text).InOrder(); }), ExitUsage) << text;
}

TEST(TextTable, ColumnsAlignByCharacters) {
    CTextTable table({{"Region", CTextTable::Left}, {"Mean (°C)", CTextTable::Right}, {"", CTextTable::Left}});
    table.Row({"Gehäuse", "21.50"});
    table.Row({"x", "-1234567890", "note", "surplus"});
    EXPECT_EQ(table.Text(),
              "Region     Mean (°C)\n"
              "───────  ───────────  ────\n"
              "Gehäuse        21.50\n"
              "x        -1234567890  note\n");
    CTextTable plain({{"", CTextTable::Left}, {"", CTextTable::Left}});
    plain.Row({"a", "b"});
    EXPECT_EQ(plain.Text(), "a  b\n");
}

}  // namespace
}  // namespace ovix::app
