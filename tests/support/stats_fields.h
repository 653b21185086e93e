#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "reduce/pixels/stats.h"

namespace ovix::test {

/// The fields of a result by name, as doubles.
inline std::vector<std::pair<const char*, double>> Fields(const reduce::CStats& s) {
    return {{"mean", s.mean},
            {"sum", s.sum},
            {"variance", s.variance},
            {"standardDeviation", s.standardDeviation},
            {"minimum", s.minimum},
            {"maximum", s.maximum},
            {"minimumPosition.x", s.minimumPosition.x},
            {"minimumPosition.y", s.minimumPosition.y},
            {"maximumPosition.x", s.maximumPosition.x},
            {"maximumPosition.y", s.maximumPosition.y},
            {"minimumIndex", s.minimumIndex},
            {"maximumIndex", s.maximumIndex},
            {"allMinimum", s.allMinimum},
            {"allMaximum", s.allMaximum},
            {"allMinimumPosition.x", s.allMinimumPosition.x},
            {"allMinimumPosition.y", s.allMinimumPosition.y},
            {"allMaximumPosition.x", s.allMaximumPosition.x},
            {"allMaximumPosition.y", s.allMaximumPosition.y},
            {"allMinimumIndex", s.allMinimumIndex},
            {"allMaximumIndex", s.allMaximumIndex},
            {"count", s.count},
            {"centerValue", s.centerValue},
            {"centerX", s.centerX},
            {"centerY", s.centerY},
            {"left", s.boundsTopLeft.x},
            {"top", s.boundsTopLeft.y},
            {"right", s.boundsBottomRight.x},
            {"bottom", s.boundsBottomRight.y},
            {"firstIndex", s.firstIndex},
            {"lastIndex", s.lastIndex},
            {"boundsWidth", s.boundsWidth},
            {"boundsHeight", s.boundsHeight},
            {"statusUnion", s.statusUnion},
            {"minimumStatus", s.minimumStatus},
            {"maximumStatus", s.maximumStatus},
            {"centerStatus", s.centerStatus}};
}

/// Every field to the last bit; a NaN is the same as a NaN.
inline void ExpectSame(const reduce::CStats& found, const reduce::CStats& expected) {
    const auto a = Fields(found), b = Fields(expected);
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::isnan(a[i].second) && std::isnan(b[i].second)) continue;
        EXPECT_EQ(a[i].second, b[i].second) << a[i].first;
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
