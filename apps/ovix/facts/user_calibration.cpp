#include "apps/ovix/facts/user_calibration.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/facts/json_field.h"

namespace ovix::app {

namespace {

constexpr const char* kKind = "user calibration";
constexpr const char* kRadianceUnit = "W/(cm² sr)";
/// A polynomial of a higher order says nothing of a camera; the kernels would take `pow` at each of its terms.
constexpr int kHighestOrder = 15;

bool IsAscending(const TArray<double>& values) {
    const auto falls = [](double a, double b) { return !(a <= b); };
    return std::adjacent_find(values.begin(), values.end(), falls) == values.end();
}

void ReadPreset(const CField& field, CRCalFile& calibration) {
    const int preset = field["preset"].Integer(0, CRCalFile::PresetCount - 1);
    int former = 0;
    field["preset"].Require(!calibration.GetPolyOrder(preset, former), "each preset once");
    const int order = field["order"].Integer(-2, kHighestOrder);
    field.Require(calibration.SetPolynomial(preset, order, field["coefficients"].Numbers()),
                  "as many coefficients as the order takes: one more than it, two for -1 and -2");
    if (field.Has("backgroundCounts")) calibration.SetBackgroundValue(preset, field["backgroundCounts"].Number());
    if (field.Has("temperatureTable")) {
        const CField table = field["temperatureTable"];
        const TArray<double> radiances = table["radiances"].Numbers(), temperatures = table["celsius"].Numbers();
        table.Require(radiances.size() >= 2 && IsAscending(temperatures) &&
                          calibration.SetLookup(preset, radiances, temperatures),
                      "two radiances or more and a temperature for each, both in ascending order");
    }
    if (field.Has("temperatureCoefficients")) {
        const CField list = field["temperatureCoefficients"];
        const TArray<double> coefficients = list.Numbers();
        const int count = static_cast<int>(coefficients.size());
        list.Require(count <= kHighestOrder + 1 && calibration.SetTempPolynomial(preset, count - 1, coefficients),
                     "2 to 16 coefficients");
    }
}

Json ListOf(const TArray<double>& values) { return std::vector<double>(values.begin(), values.end()); }

Json PresetJson(const CRCalFile& calibration, int preset, int order) {
    TArray<double> coefficients, radiances, temperatures;
    calibration.GetCoefficients(preset, coefficients);
    Json json = {{"preset", preset}, {"order", order}, {"coefficients", ListOf(coefficients)}};
    double background = 0;
    if (calibration.GetBackgroundValue(preset, background)) json["backgroundCounts"] = background;
    calibration.GetLookup(preset, radiances, temperatures);
    if (radiances.size())
        json["temperatureTable"] = {{"radiances", ListOf(radiances)}, {"celsius", ListOf(temperatures)}};
    if (calibration.GetTempCoefficients(preset, coefficients)) json["temperatureCoefficients"] = ListOf(coefficients);
    return json;
}

}  // namespace

CRCalFile ReadUserCalibration(const std::string& path) {
    const std::string name = path == "-" ? "standard input" : path;
    const Json document = ReadJson(path, "a user calibration");
    const CField root(name, document, "");
    root["kind"].RequireText(kKind);
    root["schema"].Integer(kSchemaVersion, kSchemaVersion);
    root["radianceUnit"].RequireText(kRadianceUnit);
    CRCalFile calibration;
    const CField band = root["bandMicrometres"];
    const TArray<double> ends = band.Numbers();
    band.Require(ends.size() == 2 && calibration.SetBandpass(ends[0], ends[1]), "the low and the high end of a band");
    root["presets"].ForEach([&](const CField& preset) { ReadPreset(preset, calibration); });
    root["presets"].Require(calibration.HasCoefficients(), "a preset or more");
    return calibration;
}

Json UserCalibrationDocument(const CRCalFile& calibration) {
    double low = 0, high = 0;
    calibration.GetBandpass(low, high);
    Json document = {{"schema", kSchemaVersion},
                     {"kind", kKind},
                     {"radianceUnit", kRadianceUnit},
                     {"bandMicrometres", {low, high}},
                     {"presets", Json::array()}};
    for (int preset = 0, order = 0; preset < CRCalFile::PresetCount; ++preset) {
        if (calibration.GetPolyOrder(preset, order))
            document["presets"].push_back(PresetJson(calibration, preset, order));
    }
    return document;
}

}  // namespace ovix::app
