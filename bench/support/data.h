#pragma once

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench/support/kernel.h"

/// Data to measure on, and the comparison of answers.
namespace ovix::bench {

/// A frame of 14-bit counts as a camera sees a room: slow gradients over some thousand counts, and noise.
inline std::vector<u16> SceneCounts(const SRun& run, u32 lane) {
    std::mt19937 random(1 + lane);
    std::vector<u16> counts(run.Pixels());
    for (u32 i = 0; i < run.Pixels(); ++i) {
        const double x = (i % run.width + 7.0 * lane) / 200, y = (i / run.width) / 150.0;
        counts[i] = static_cast<u16>(6000 + 3000 * std::sin(x) * std::cos(y) + static_cast<double>(random() % 41));
    }
    return counts;
}

/// One scene for each lane.
inline std::vector<std::vector<u16>> SceneLanes(const SRun& run) {
    std::vector<std::vector<u16>> lanes;
    for (u32 lane = 0; lane < run.lanes; ++lane) lanes.push_back(SceneCounts(run, lane));
    return lanes;
}

/// One buffer for each lane, written once so that its pages are there.
template <class T>
std::vector<std::vector<T>> Lanes(const SRun& run) {
    return std::vector<std::vector<T>>(run.lanes, std::vector<T>(run.Pixels()));
}

/// Correction tables with one entry for each pixel: gains around 1, offsets around 0, and one pixel in 256 replaced by
/// a neighbour.
struct STables {
    std::vector<float> gain;
    std::vector<i16> offset;
    std::vector<u32> replace;

    explicit STables(const SRun& run) {
        std::mt19937 random(42);
        for (u32 i = 0; i < run.Pixels(); ++i) {
            gain.push_back(0.9f + 0.0001f * static_cast<float>(random() % 2000));
            offset.push_back(static_cast<i16>(static_cast<i32>(random() % 401) - 200));
            replace.push_back(random() % 256 ? i : i ? i - 1 : 0);
        }
    }
};

/// Empty when the two are the same, element by element (a NaN is the same as a NaN), else the first difference in
/// words.
template <class A, class B>
std::string FirstDifference(const A& found, const B& expected) {
    if (std::size(found) != std::size(expected)) return "different sizes";
    for (std::size_t i = 0; i < std::size(found); ++i) {
        const bool bothNaN = found[i] != found[i] && expected[i] != expected[i];
        if (found[i] == expected[i] || bothNaN) continue;
        return "at " + std::to_string(i) + ": expected " + std::to_string(expected[i]) + ", found " +
               std::to_string(found[i]);
    }
    return {};
}

}  // namespace ovix::bench
