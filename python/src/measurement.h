#pragma once

#include "python/src/binding.h"

namespace ovix::python {

/// What a measured frame is beside its pixels.
struct SMeasuredFacts {
    explicit SMeasuredFacts(const measure::CFrame& frame);

    u64 number;
    i64 ticks;
    bool yearAssumed;
    std::optional<u64> counter;
    std::optional<u8> preset;
    std::vector<u64> merged;
    std::string unit;  ///< "temperature (factory)"
    std::vector<measure::SParameter> parameters;
};

/// A measurement with the frames that it works in, of which no two threads have one at a time. The interpreter's lock
/// guards the idle ones.
class CPyMeasurement {
  public:
    explicit CPyMeasurement(measure::CMeasurement made) : measurement(std::move(made)) {}

    SMeasuredFacts MeasureOne(u64 number, const py::object& values, const py::object& status);
    std::vector<SMeasuredFacts> MeasureMany(const Numbers& numbers, const py::object& values, const py::object& status,
                                            unsigned threads);

    measure::CMeasurement measurement;

  private:
    class CBorrowedFrame;

    std::vector<std::unique_ptr<measure::CFrame>> idle_;
};

/// "°C", "W/(cm² sr)", "counts".
const char* UnitSymbol(EUnit unit, ETempType scale);

/// Frames by their numbers as runs of first, last and step.
measure::CFrameNumbers NumbersOf(const std::vector<std::array<u64, 3>>& runs);

}  // namespace ovix::python
