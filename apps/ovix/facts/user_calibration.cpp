#include "apps/ovix/facts/user_calibration.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/facts/small_text.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

constexpr const char* kKind = "user calibration";
constexpr const char* kRadianceUnit = "W/(cm² sr)";
/// A polynomial of a higher order says nothing of a camera; the kernels would take `pow` at each of its terms.
constexpr int kHighestOrder = 15;

Json Parse(const std::string& file) {
    try {
        return Json::parse(ReadSmallText(file, "a user calibration"));
    } catch (const Json::exception& error) {
        // Ahead of the words stands the name of the exception in brackets.
        const std::string_view text = error.what();
        const auto words = text.find("] ");
        throw CFault(
            {.file = file, .problem = fmt::format("is no JSON: {}", text.substr(words == text.npos ? 0 : words + 2))});
    }
}

/// One value of the document, which knows its way from the root.
class CField {
  public:
    CField(const std::string& file, const Json& value, std::string path)
        : file_(file), value_(value), path_(std::move(path)) {}

    bool Has(const char* key) const { return value_.is_object() && value_.contains(key); }
    CField operator[](const char* key) const {
        if (!value_.is_object()) Fail("an object");
        if (!value_.contains(key)) throw CFault({.file = file_, .problem = Sub(key) + " is missing"});
        return {file_, value_[key], Sub(key)};
    }
    void RequireText(const char* text) const {
        if (value_ != text) Fail(std::string("\"") + text + '"');
    }
    double Number() const {
        if (!value_.is_number()) Fail("a number");
        return value_.get<double>();
    }
    int Integer(int low, int high) const {
        // As double, a number beyond 64 bits is not taken for its remainder.
        if (!value_.is_number_integer() || value_.get<double>() < low || value_.get<double>() > high)
            Fail(low == high ? fmt::format("{}", low) : fmt::format("a whole number from {} to {}", low, high));
        return value_.get<int>();
    }
    TArray<double> Numbers() const {
        TArray<double> numbers;
        ForEach([&](const CField& item) { numbers.Add(item.Number()); });
        return numbers;
    }
    template <class F>
    void ForEach(const F& f) const {
        if (!value_.is_array()) Fail("a list");
        for (std::size_t i = 0; i < value_.size(); ++i) f(CField(file_, value_[i], fmt::format("{}[{}]", path_, i)));
    }
    /// The calibration did not take what was read here.
    void Require(bool taken, const char* expected) const {
        if (!taken) throw CFault({.file = file_, .problem = path_, .expected = expected});
    }

  private:
    std::string Sub(const char* key) const { return path_.empty() ? key : path_ + '.' + key; }
    /// Lists and objects are shown by their type alone: they may be nested deeper than the stack could follow.
    [[noreturn]] void Fail(std::string expected) const {
        constexpr std::size_t kMostShown = 40;
        std::string found = value_.type_name();
        if (value_.is_primitive()) found = value_.dump(-1, ' ', false, Json::error_handler_t::replace);
        if (found.size() > kMostShown) found = value_.type_name();
        throw CFault({.file = file_, .problem = path_, .expected = std::move(expected), .found = std::move(found)});
    }

    const std::string& file_;
    const Json& value_;
    std::string path_;
};

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
    const Json document = Parse(path);
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
