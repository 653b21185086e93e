#include "apps/ovix/text/number_text.h"

#include <fmt/format.h>

#include <cmath>

namespace ovix::app {

std::string ShownValue(double value, EUnit unit) {
    if (!std::isfinite(value)) return "-";
    if (IsTemperature(unit)) return fmt::format("{:.2f}", value);
    if (unit == RadianceFactory || unit == RadianceUser) return fmt::format("{:.6g}", value);
    return fmt::format("{:.1f}", value);
}

std::string ExactNumber(double value) { return std::isfinite(value) ? fmt::format("{}", value) : ""; }

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

}  // namespace ovix::app
