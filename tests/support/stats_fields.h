#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "reduce/pixels/stats.h"

namespace ovix::test {

/// Every field to the last bit; a NaN is the same as a NaN.
inline void ExpectSame(const reduce::CStats& found, const reduce::CStats& expected) {
    struct SFields {
        const char* name;
        std::vector<double> values;
    };
    const auto fieldsOf = [](const reduce::CStats& s) {
        const auto points = [](auto... p) { return std::vector<double>{static_cast<double>(p.x)..., double(p.y)...}; };
        return std::vector<SFields>{
            {"sum, mean, variance, deviation, count", {s.sum, s.mean, s.variance, s.standardDeviation, 1.0 * s.count}},
            {"minimum, maximum", {s.minimum, s.maximum, 1.0 * s.minimumIndex, 1.0 * s.maximumIndex}},
            {"minimum, maximum at", points(s.minimumPosition, s.maximumPosition)},
            {"of all", {s.allMinimum, s.allMaximum, 1.0 * s.allMinimumIndex, 1.0 * s.allMaximumIndex}},
            {"of all at", points(s.allMinimumPosition, s.allMaximumPosition)},
            {"centre", {s.centerValue, s.centerX, s.centerY}},
            {"box", points(s.boundsTopLeft, s.boundsBottomRight)},
            {"size", {1.0 * s.boundsWidth, 1.0 * s.boundsHeight, 1.0 * s.firstIndex, 1.0 * s.lastIndex}},
            {"status", {1.0 * s.statusUnion, 1.0 * s.minimumStatus, 1.0 * s.maximumStatus, 1.0 * s.centerStatus}}};
    };
    const auto a = fieldsOf(found), b = fieldsOf(expected);
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t k = 0; k < a[i].values.size(); ++k) {
            const double x = a[i].values[k], y = b[i].values[k];
            EXPECT_TRUE(x == y || (std::isnan(x) && std::isnan(y))) << a[i].name << " " << k << ": " << x << ", " << y;
        }
    }
}

/// A record in which every field of a result holds something of its own.
inline reduce::CStats Held() {
    reduce::CStats s;
    s.mean = s.sum = s.variance = s.standardDeviation = -1.5;
    s.minimum = s.maximum = s.allMinimum = s.allMaximum = s.centerValue = -2.5;
    s.minimumPosition = s.maximumPosition = s.allMinimumPosition = s.allMaximumPosition = {101, 102};
    s.minimumIndex = s.maximumIndex = s.allMinimumIndex = s.allMaximumIndex = s.firstIndex = s.lastIndex = 103;
    s.boundsTopLeft = {2, 1};
    s.boundsBottomRight = {4, 2};
    s.count = s.boundsWidth = s.boundsHeight = 105;
    s.statusUnion = s.minimumStatus = s.maximumStatus = s.centerStatus = 106;
    return s;
}

}  // namespace ovix::test
