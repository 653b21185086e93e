#include "apps/ovix/facts/calibration_points.h"

#include <fmt/format.h>

#include <cmath>

#include "apps/ovix/facts/small_text.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

using measure::SCalibrationPoint;

namespace {

/// A black body outside these, in kelvin, is one whose scale was mistaken: no thermal camera measures it.
constexpr double kColdestBody = 100;
constexpr double kHottestBody = 5000;
/// No detector counts further.
constexpr double kMostCounts = 1e9;

std::string_view Trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\"");
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \t\r\"") - begin + 1);
}

std::optional<ETempType> ScaleOf(char letter) {
    switch (letter & ~0x20) {
        case 'C':
            return Celsius;
        case 'F':
            return Fahrenheit;
        case 'K':
            return Kelvin;
        case 'R':
            return Rankine;
        default:
            return {};
    }
}

/// The scale that a title tells at its end in parentheses: "temperature (°C)".
std::optional<ETempType> ScaleOfTitle(std::string_view title) {
    const auto open = title.rfind('(');
    const auto close = title.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open + 2) return {};
    const std::string_view unit = title.substr(open + 1, close - open - 1);
    const bool isScale = unit.size() == 1 || unit.substr(0, unit.size() - 1) == "°";
    return isScale ? ScaleOf(unit.back()) : std::nullopt;
}

/// Reads line after line; knows where it is.
class CPointLines {
  public:
    CPointLines(const std::string& file, std::optional<ETempType> scale, u8 preset)
        : file_(file), scale_(scale), preset_(preset) {}

    void Take(std::string_view line) {
        ++number_;
        line = Trimmed(line);
        if (line.empty() || line.front() == '#') return;
        const auto fields = SplitText(line, line.find(';') == std::string_view::npos ? ',' : ';');
        if (fields.size() < 2 || fields.size() > 3) Fail("counts,temperature or counts,temperature,preset", line);
        const auto counts = ParseNumber<double>(Trimmed(fields[0]));
        if (!counts && points.empty() && !sawHead_) {
            sawHead_ = true;
            if (const auto scale = ScaleOfTitle(Trimmed(fields[1]))) scale_ = scale;
            return;
        }
        if (!counts || !(std::abs(*counts) <= kMostCounts)) Fail("counts", fields[0]);
        points.push_back(
            {*counts, CelsiusOf(Trimmed(fields[1])), fields.size() == 3 ? PresetOf(Trimmed(fields[2])) : preset_});
    }

    std::vector<SCalibrationPoint> points;

  private:
    double CelsiusOf(std::string_view text) const {
        auto scale = scale_;
        std::string_view number = text;
        if (const auto own = text.empty() ? std::nullopt : ScaleOf(text.back())) {
            scale = own;
            number = Trimmed(text.substr(0, text.size() - 1));
            if (number.ends_with("°")) number = Trimmed(number.substr(0, number.size() - std::string_view("°").size()));
        }
        const auto value = ParseNumber<double>(number);
        if (value && !scale) Fail("a temperature with its scale, as in 20C or 293.15K, or a --scale", text);
        if (!value) Fail("a temperature", text);
        const double kelvin = CMath::ConvertTemperature(*value, *scale, Kelvin);
        if (!(kelvin >= kColdestBody && kelvin <= kHottestBody)) Fail("a black body between 100 K and 5000 K", text);
        return CMath::ConvertTemperature(*value, *scale, Celsius);
    }
    u8 PresetOf(std::string_view text) const {
        const auto preset = ParseNumber<u8>(text);
        if (!preset || *preset >= CRCalFile::PresetCount) Fail("a preset from 0 to 7", text);
        return *preset;
    }
    [[noreturn]] void Fail(const char* expected, std::string_view found) const {
        throw CFault({.file = file_,
                      .problem = fmt::format("line {}", number_),
                      .expected = expected,
                      .found = fmt::format("\"{}\"", found.substr(0, 60))});
    }

    const std::string& file_;
    std::optional<ETempType> scale_;
    u8 preset_;
    u64 number_ = 0;
    bool sawHead_ = false;
};

}  // namespace

std::vector<measure::SCalibrationPoint> ReadCalibrationPoints(const std::string& path, std::optional<ETempType> scale,
                                                              u8 preset) {
    const std::string name = path == "-" ? "standard input" : path;
    const std::string text = ReadSmallText(path, "pairs of counts and temperatures");
    CPointLines lines(name, scale, preset);
    std::string_view rest = text;
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
    for (const std::string_view line : SplitText(rest, '\n')) lines.Take(line);
    if (lines.points.empty()) throw CFault({.file = name, .problem = "there is no pair of counts and temperature"});
    return lines.points;
}

}  // namespace ovix::app
