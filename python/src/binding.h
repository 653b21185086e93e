#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <functional>

#include "measure/measure.h"

/// The extension module `ovix._core`: the measuring layer as Python sees it, with numbers in and arrays out. Words,
/// defaults and objects of Python are made above it, in Python.
namespace ovix::python {

namespace py = pybind11;

using Numbers = py::array_t<u64, py::array::c_style | py::array::forcecast>;

/// A point in time in units of 100 ns since 1970; none is the smallest number, as NumPy has it.
inline constexpr i64 kNoTime = std::numeric_limits<i64>::min();
inline i64 TicksOf(const std::optional<measure::Time>& time) {
    return time ? time->time_since_epoch().count() : kNoTime;
}

/// The memory of an array that is to be written; null for None. Throws `ValueError` for one of another type, shape or
/// order, and for one that cannot be written to.
template <class T>
T* Room(const py::object& object, const std::vector<py::ssize_t>& shape, const char* name) {
    if (object.is_none()) return nullptr;
    const auto wanted = [&] {
        return std::string(name) + ": expected a writable array in C order of " +
               std::string(py::str(py::dtype::of<T>())) + " and shape " +
               std::string(py::str(py::tuple(py::cast(shape))));
    };
    if (!py::isinstance<py::array_t<T>>(object)) throw py::value_error(wanted());
    auto array = py::reinterpret_borrow<py::array>(object);
    const bool fits = std::equal(shape.begin(), shape.end(), array.shape(), array.shape() + array.ndim());
    if (!fits || !array.writeable() || !(array.flags() & py::array::c_style)) throw py::value_error(wanted());
    return static_cast<T*>(array.mutable_data());
}

/// An array of one dimension that owns the vector.
template <class T>
py::array Owned(std::vector<T> values, const std::vector<py::ssize_t>& shape) {
    auto* kept = new std::vector<T>(std::move(values));
    const py::capsule owner(kept, [](void* vector) { delete static_cast<std::vector<T>*>(vector); });
    return py::array_t<T>(shape, kept->data(), owner);
}

/// Ctrl-C and its like, once in a while: `Check` asks the interpreter not more often than every 50 ms, and throws what
/// its handler raised.
class CSignals {
  public:
    void Check();

  private:
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now();
};

/// Runs `action(i, worker)` for all i below `count` on that many threads (0: those of the machine), of which the
/// caller's is worker 0, with the interpreter's lock given up. Signals end it between two of them. The error of the
/// smallest i comes out.
void InParallel(u64 count, unsigned threads, const std::function<void(u64 i, unsigned worker)>& action);
unsigned WorkersFor(u64 count, unsigned threads);

/// Runs `action` on another thread while this one waits for signals, which ask it to stop.
void Interruptibly(std::stop_source& stop, const std::function<void()>& action);

/// A source, and what was asked for once of it. The interpreter's lock guards that.
class CPySource {
  public:
    explicit CPySource(measure::CSource opened) : source(std::move(opened)) {}

    const measure::CFrameReader& Reader();
    const measure::CFrameIndex& Index();
    /// "uint16", or "rgb" for three 8-bit channels; empty for frames without pixels.
    const char* Element();

    measure::CSource source;

  private:
    std::optional<measure::CFrameReader> reader_;
    std::optional<measure::CFrameIndex> index_;
};

void BindErrors(py::module_& module);
void BindSource(py::module_& module);
void BindCalibration(py::module_& module);
void BindMeasurement(py::module_& module);
void BindSeries(py::module_& module);
void BindRecordings(py::module_& module);

/// A finding, a parameter, as Python gets them: a dictionary of what is there.
py::dict Dict(const measure::SFinding& finding);
py::dict Dict(const measure::SParameter& parameter);

/// From what Python says; see `Measurement` in `_core.pyi`.
measure::SMeasureOptions MeasureOptionsOf(const py::dict& options);

}  // namespace ovix::python
