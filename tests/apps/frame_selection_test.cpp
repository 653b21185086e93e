#include "apps/ovix/cli/frame_selection.h"

#include <gtest/gtest.h>

#include "app_files.h"

namespace ovix::app {
namespace {

std::vector<u64> Chosen(const measure::CFrameNumbers& numbers) {
    std::vector<u64> chosen;
    for (u64 n = 0; n < numbers.Count(); ++n) chosen.push_back(numbers[n]);
    return chosen;
}

TEST(FrameSelection, ReadsSinglesRangesStepsAndTheEnd) {
    const struct {
        const char* text;
        std::vector<u64> frames;  // of a source of ten
    } cases[] = {
        {"0", {0}},           {"9", {9}},
        {"-1", {9}},          {"-10", {0}},
        {"2-4", {2, 3, 4}},   {"2:4", {2, 3, 4}},
        {"3-3", {3}},         {"0-9x4", {0, 4, 8}},
        {"1-4x3", {1, 4}},    {"0-9x100", {0}},
        {"-3--1", {7, 8, 9}}, {"-3:-1", {7, 8, 9}},
        {"8--1", {8, 9}},     {"5,0-1,5,-1", {5, 0, 1, 5, 9}},
        {"7x2", {7}},
    };
    for (const auto& c : cases) EXPECT_EQ(Chosen(CFrameSelection(c.text).Of(10)), c.frames) << c.text;
    EXPECT_EQ(CFrameSelection("0--1x1000").Of(u64{1} << 40).Count(), ((u64{1} << 40) - 1) / 1000 + 1);
}

TEST(FrameSelection, RefusesOtherTextsAndFramesThatAreNotThere) {
    const char* cases[] = {"",     ",",    "a",  "1,",  "1-", "-",   "1-2-3", "1x0", "1x-1", "1 - 2",
                           "1..2", "1-2x", "+1", "1.5", "10", "-11", "5-10",  "4-2", "-1-0", "99999999999999999999"};
    for (const char* text : cases) {
        EXPECT_EQ(test::ExitOf([&] { CFrameSelection(text).Of(10); }), ExitUsage) << text;
    }
    EXPECT_EQ(Chosen(CFrameSelection("0x10").Of(10)), std::vector<u64>{0});  // frame 0 in steps of ten
}

TEST(FrameSelection, OfAPipeTakesNumbersThatRise) {
    EXPECT_EQ(Chosen(CFrameSelection("2-6x2,9").InOrder()), (std::vector<u64>{2, 4, 6, 9}));
    for (const char* text : {"-1", "0--1", "5,3", "2-4,4"})
        EXPECT_EQ(test::ExitOf([&] { CFrameSelection(text).InOrder(); }), ExitUsage) << text;
}

}  // namespace
}  // namespace ovix::app
