#include "reduce/pixels/stats.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/stats_fields.h"

namespace ovix::reduce {
namespace {

using test::ExpectSame;
using test::Held;

TEST(StatsCalculator, FollowsItsStepsAndNotesNoIndex) {
    CStats stats = Held();
    CStatsCalculator calculator(stats);
    calculator.Start();
    CStats expected = Held();
    expected.sum = expected.variance = 0;
    expected.count = expected.statusUnion = expected.minimumStatus = expected.maximumStatus = 0;
    expected.allMinimumIndex = expected.allMaximumIndex = 0xFFFFFFFF;
    ExpectSame(stats, expected);

    calculator.AddData(-2, 8, 9, 0);  // above what the record held, -2.5; not counted
    calculator.AddData(-8, 1, 3, 5);  // the first that counts
    calculator.AddData(-2, 4, 3, 3);  // the maximum, but not of all: the first stands
    calculator.AddData(-2, 2, 2, 4);  // not the maximum: the first stands
    calculator.AddData(-20, 16, 1, 1);
    calculator.Finish();
    expected.sum = -12;
    expected.mean = -4;
    expected.variance = 72 / 3.0 - 16;
    expected.standardDeviation = std::sqrt(8.0);
    expected.count = 3;
    expected.minimum = -8;
    expected.maximum = -2;
    expected.minimumPosition = {3, 5};
    expected.maximumPosition = {3, 3};
    expected.minimumStatus = 1;
    expected.maximumStatus = 4;
    expected.statusUnion = 7;
    expected.allMinimum = -20;
    expected.allMaximum = -2;
    expected.allMinimumPosition = {1, 1};
    expected.allMaximumPosition = {9, 0};
    expected.minimumIndex = expected.maximumIndex = expected.allMinimumIndex = expected.allMaximumIndex = 0;
    expected.boundsTopLeft = {1, 0};
    expected.boundsBottomRight = {9, 5};
    expected.boundsWidth = 9;
    expected.boundsHeight = 6;
    expected.centerX = 5;
    expected.centerY = 2.5;
    ExpectSame(stats, expected);

    CStats fresh;
    CStatsCalculator below(fresh);
    below.Start();
    below.AddData(-5, 24, 7, 7);
    below.Finish();
    EXPECT_EQ(fresh.allMaximum, 0) << "goes on from what the record held";
    EXPECT_EQ(fresh.allMaximumIndex, 0xFFFFFFFF);
    EXPECT_EQ(fresh.boundsWidth, 0U);
    EXPECT_EQ(fresh.boundsTopLeft, (SPoint{0, 0}));
}

}  // namespace
}  // namespace ovix::reduce
