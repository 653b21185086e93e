#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "reduce/pixels/stats.h"

namespace ovix::test {

/// Every field to the last bit; a NaN is the same as a NaN.
inline void ExpectSame(const reduce::CStats& found, const reduce::CStats& expected) {
    const auto fieldsOf = [](const reduce::CStats& s) {
        std::vector<double> fields;
        const auto put = [&](auto... values) { (fields.push_back(static_cast<double>(values)), ...); };
        put(s.sum, s.mean, s.variance, s.standardDeviation, s.count);
        put(s.minimum, s.maximum, s.minimumIndex, s.maximumIndex);
        put(s.allMinimum, s.allMaximum, s.allMinimumIndex, s.allMaximumIndex);
        put(s.centerValue, s.centerX, s.centerY, s.boundsWidth, s.boundsHeight);
        put(s.firstIndex, s.lastIndex);
        put(s.statusUnion, s.minimumStatus, s.maximumStatus, s.centerStatus);
        for (const auto& p : {s.minimumPosition, s.maximumPosition, s.allMinimumPosition, s.allMaximumPosition,
                              s.boundsTopLeft, s.boundsBottomRight}) {
            put(p.x, p.y);
        }
        return fields;
    };
    const std::vector<double> a = fieldsOf(found), b = fieldsOf(expected);
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_TRUE(a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i])))
            << "field " << i << ": " << a[i] << ", " << b[i];
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
