#pragma once

#include <string>
#include <vector>

#include "measure/frame/measurement.h"

namespace ovix::measure {

/// A named value that differs between two frames; a side that has none is empty.
struct SValueDifference {
    std::string name;
    std::string a;
    std::string b;
};

/// How two measured frames differ.
struct SFrameDifference {
    u64 pixels = 0;      ///< that differ by more than the tolerance, or of which one alone is a number
    u64 status = 0;      ///< pixels whose status differs
    double largest = 0;  ///< of the differences of numbers, within the tolerance too
    SPoint at;           ///< where it is, the first of several
    float a = 0;         ///< the values there
    float b = 0;
    std::vector<SValueDifference> values;  ///< time, counter, preset, the scene and the named values of the frames

    bool Any() const { return pixels || status || !values.empty(); }
};

/// Compares pixels, status and metadata. The tolerance is in the frames' unit, as a difference. Throws `CError`
/// (WrongArgument) for frames of different sizes, units or scales.
OVIX_MEASURE_API SFrameDifference Compare(const CFrame& a, const CFrame& b, double tolerance);

}  // namespace ovix::measure
