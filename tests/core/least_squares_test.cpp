#include "core/least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace ovix {
namespace {

double At(const TArray<double>& coefficients, double x) {
    double value = 0;
    for (u32 k = coefficients.size(); k-- > 0;) value = value * x + coefficients.ConstGetItem(k);
    return value;
}

TEST(LeastSquares, GivesPolynomialsBack) {
    const struct {
        const char* what;
        TArray<double> truth;
        double first, step;
        int points;
        double tolerance;  ///< of a value, relative to the greatest
    } cases[] = {
        {"a constant", {7.5}, 3, 0, 1, 1e-15},
        {"a line", {-1, 0.25}, 0, 10, 2, 1e-15},
        {"raw counts", {1.5, 2e-3, 4e-9}, 2000, 500, 120, 1e-13},
        {"raw counts, exactly as many points as coefficients", {1, -2e-4, 3e-8, 1e-12}, 10'000, 9'000, 4, 1e-12},
        {"time stamps", {5, 1e-8, 1e-18}, 1.3e9, 1000, 50, 1e-12},
        {"a high degree", {1, 1, 1, 1, 1, 1, 1, 1}, -1, 0.1, 21, 1e-13},
        {"small numbers", {1e-12, 1e-9, 1e-3}, 1e-7, 1e-8, 30, 1e-12},
    };
    for (const auto& c : cases) {
        TArray<double> x, y, fitted;
        double greatest = 0;
        for (int i = 0; i < c.points; ++i) {
            x.Add(c.first + i * c.step);
            y.Add(At(c.truth, x[static_cast<u32>(i)]));
            greatest = std::max(greatest, std::abs(y[static_cast<u32>(i)]));
        }
        ASSERT_TRUE(LinearLeastSquareFit(x, y, static_cast<int>(c.truth.size()) - 1, fitted)) << c.what;
        ASSERT_EQ(fitted.size(), c.truth.size()) << c.what;
        for (u32 i = 0; i < x.size(); ++i) EXPECT_NEAR(At(fitted, x[i]), y[i], c.tolerance * greatest) << c.what;
    }
}

TEST(LeastSquares, TakesTheMiddleOfContradictions) {
    TArray<double> x{1, 1, 3, 3}, y{0, 2, 4, 8}, fitted;
    ASSERT_TRUE(LinearLeastSquareFit(x, y, 1, fitted));  // through the means (1, 1) and (3, 6)
    EXPECT_NEAR(fitted[0], -1.5, 1e-14);
    EXPECT_NEAR(fitted[1], 2.5, 1e-14);
}

TEST(LeastSquares, RefusesWhatCannotBeSolved) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double most = std::numeric_limits<double>::max();
    struct {
        const char* what;
        TArray<double> x, y;
        int degree;
    } cases[] = {
        {"no points", {}, {}, 0},
        {"too few points", {1, 2}, {1, 2}, 2},
        {"too few different points", {1, 1, 2, 2}, {1, 1, 2, 2}, 2},
        {"one point over and over", {5, 5, 5}, {1, 2, 3}, 1},
        {"a negative degree", {1, 2}, {1, 2}, -1},
        {"a degree beyond all points", {1, 2}, {1, 2}, INT32_MAX},
        {"arrays of two lengths", {1, 2, 3}, {1, 2}, 1},
        {"an x that is no number", {1, nan, 3}, {1, 2, 3}, 1},
        {"an infinite y", {1, 2, 3}, {1, inf, 3}, 1},
        {"a spread beyond double", {-most, most}, {1, 2}, 1},
    };
    for (auto& c : cases) {
        TArray<double> fitted{42};
        EXPECT_FALSE(LinearLeastSquareFit(c.x, c.y, c.degree, fitted)) << c.what;
        EXPECT_TRUE(fitted.size() == 1 && fitted[0] == 42) << c.what;
    }
}

}  // namespace
}  // namespace ovix
