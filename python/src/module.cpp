#include "python/src/binding.h"

PYBIND11_MODULE(_core, module) {
    module.doc() = "The measuring layer of ovix; what is for users stands in the package `ovix`.";
    ovix::python::BindErrors(module);
    ovix::python::BindSource(module);
    ovix::python::BindCalibration(module);
    ovix::python::BindMeasurement(module);
    ovix::python::BindSeries(module);
    ovix::python::BindRecordings(module);
}
