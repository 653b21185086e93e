#include "apps/ovix/facts/calibration_json.h"

#include <cmath>

namespace ovix::app {

namespace {

std::string KeyOf(const measure::SParameter& value) {
    static constexpr std::pair<std::string_view, const char*> kUnits[] = {
        {"K", "Kelvin"}, {"°C", "Celsius"}, {"counts", "Counts"}, {"µm", "Micrometres"}};
    for (const auto& [symbol, word] : kUnits) {
        if (value.unit == symbol) return value.key + word;
    }
    return value.key;
}

bool IsSwitch(const std::string& key) { return key == "nonlinear" || key == "compensatesDrift"; }
bool IsList(const std::string& key) { return key == "coefficients"; }

Json ValueOf(const measure::SParameter& value) {
    if (IsSwitch(value.key)) return value.value != 0;
    constexpr double kWhole = 1e15;
    const bool counts = value.unit == "counts" || value.key == "degree" || value.key == "order";
    if (counts && value.value == std::floor(value.value) && std::abs(value.value) < kWhole)
        return static_cast<i64>(value.value);
    return value.value;
}

}  // namespace

Json CalibrationJson(const measure::SCalibrationFacts& facts) {
    if (facts.model.empty()) return nullptr;
    Json json = {{"model", facts.model}};
    for (const measure::SParameter& value : facts.values) {
        if (IsList(value.key))
            json[KeyOf(value)].push_back(value.value);
        else
            json[KeyOf(value)] = ValueOf(value);
    }
    if (!facts.temperatureBy.empty()) json["temperatureBy"] = facts.temperatureBy;
    return json;
}

}  // namespace ovix::app
