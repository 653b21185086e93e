#include "python/src/binding.h"

namespace ovix::python {

using namespace measure;

namespace {

TArray<double> ArrayOf(const std::vector<double>& values) {
    TArray<double> array;
    for (const double value : values) array.Add(value);
    return array;
}
std::vector<double> VectorOf(const TArray<double>& array) { return {array.begin(), array.end()}; }

void Require(bool taken, const char* what) {
    if (!taken) throw py::value_error(std::string("not a calibration: ") + what);
}

/// One preset as a dictionary; None for one that has no calibration.
py::object PresetOf(const CRCalFile& self, int preset) {
    int order = 0;
    TArray<double> coefficients, temperature, radiances, celsius;
    if (!self.GetPolyOrder(preset, order) || !self.GetCoefficients(preset, coefficients)) return py::none();
    py::dict dict;
    dict["order"] = order;
    dict["coefficients"] = VectorOf(coefficients);
    if (self.GetTempCoefficients(preset, temperature) && temperature.size())
        dict["temperature_coefficients"] = VectorOf(temperature);
    if (self.GetLookup(preset, radiances, celsius) && radiances.size())
        dict["table"] = py::make_tuple(VectorOf(radiances), VectorOf(celsius));
    BACKGROUND_TYPE type = NoBackground;
    double background = 0;
    if (self.GetBackgroundType(preset, type) && type == BackgroundValue && self.GetBackgroundValue(preset, background))
        dict["background"] = background;
    return dict;
}

void SetPreset(CRCalFile& self, int preset, const py::dict& dict) {
    Require(self.SetPolynomial(preset, dict["order"].cast<int>(),
                               ArrayOf(dict["coefficients"].cast<std::vector<double>>())),
            "coefficients");
    if (dict.contains("temperature_coefficients")) {
        const auto coefficients = dict["temperature_coefficients"].cast<std::vector<double>>();
        Require(self.SetTempPolynomial(preset, static_cast<int>(coefficients.size()) - 1, ArrayOf(coefficients)),
                "temperature coefficients");
    }
    if (dict.contains("table")) {
        const auto [radiances, celsius] = dict["table"].cast<std::pair<std::vector<double>, std::vector<double>>>();
        Require(self.SetLookup(preset, ArrayOf(radiances), ArrayOf(celsius)), "table of radiances and temperatures");
    }
    if (dict.contains("background"))
        Require(self.SetBackgroundValue(preset, dict["background"].cast<double>()), "background");
}

ETemperatureModel ModelOf(const std::string& word) {
    if (word == "table") return ETemperatureModel::Table;
    if (word == "polynomial") return ETemperatureModel::Polynomial;
    if (word == "planck") return ETemperatureModel::Planck;
    throw py::value_error("model: expected one of table, polynomial, planck, found '" + word + "'");
}

py::tuple Fit(const std::vector<std::tuple<double, double, u8>>& given, std::pair<double, double> band, int order,
              const std::string& model, int temperatureOrder) {
    std::vector<SCalibrationPoint> points;
    points.reserve(given.size());
    for (const auto& [counts, celsius, preset] : given) points.push_back({counts, celsius, preset});
    const SFitOptions options{band.first, band.second, order, ModelOf(model), temperatureOrder};
    SCalibrationFit fit;
    {
        const py::gil_scoped_release unlocked;
        fit = FitCalibration(std::move(points), options);
    }
    py::list presets;
    for (const SPresetFit& preset : fit.presets) {
        py::list fitted;
        for (const SFittedPoint& point : preset.points)
            fitted.append(py::make_tuple(point.point.counts, point.point.celsius, point.celsius));
        presets.append(py::make_tuple(preset.preset, preset.Rms(), preset.Largest(), preset.steady, fitted));
    }
    return py::make_tuple(std::move(fit.calibration), presets);
}

}  // namespace

void BindCalibration(py::module_& module) {
    py::class_<CRCalFile>(module, "Calibration")
        .def(py::init<>())
        .def_property(
            "band",
            [](const CRCalFile& self) {
                double low = 0, high = 0;
                self.GetBandpass(low, high);
                return std::pair(low, high);
            },
            [](CRCalFile& self, std::pair<double, double> band) {
                Require(self.SetBandpass(band.first, band.second), "band");
            })
        .def("preset", &PresetOf, py::arg("preset"))
        .def("set_preset", &SetPreset, py::arg("preset"), py::arg("values"));
    module.def("fit_calibration", &Fit, py::arg("points"), py::arg("band"), py::arg("order"), py::arg("model"),
               py::arg("temperature_order"));
}

}  // namespace ovix::python
