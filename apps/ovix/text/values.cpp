#include "apps/ovix/text/values.h"

#include <fmt/format.h>

#include <cmath>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

CFault BadValue(const std::string& option, const std::string& text, std::string expected) {
    return CFault({.exit = ExitUsage, .problem = option, .expected = std::move(expected), .found = "\"" + text + "\""});
}

template <class T>
std::optional<T> ParseFinite(std::string_view text) {
    const auto value = ParseNumber<T>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

double ToKelvin(double value, char scale) {
    switch (scale) {
        case 'C':
            return value + 273.15;
        case 'F':
            return (value + 459.67) / 1.8;
        case 'R':
            return value / 1.8;
        default:
            return value;
    }
}

/// "20 °C", as the tool prints it, as "20C".
std::string WithoutDegrees(std::string_view written) {
    std::string text;
    for (std::size_t i = 0; i < written.size(); ++i) {
        if (written.substr(i).starts_with("°")) {
            i += std::string_view("°").size() - 1;
        } else if (written[i] != ' ') {
            text += written[i];
        }
    }
    return text;
}

}  // namespace

std::vector<std::string_view> SplitText(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t begin = 0;;) {
        const std::size_t end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end - begin));
        if (end == std::string_view::npos) return parts;
        begin = end + 1;
    }
}

std::pair<u16, u16> ParseSize(const std::string& option, const std::string& text) {
    const auto parts = SplitText(text, 'x');
    const auto width = ParseNumber<u16>(parts.front());
    const auto height = parts.size() == 2 ? ParseNumber<u16>(parts.back()) : std::nullopt;
    constexpr u64 kMostPixels = 0x4000'0000;  // 2 GiB of counts: leaves room for all that may stand beside them
    if (!width || !height || !*width || !*height || u64{*width} * *height > kMostPixels)
        throw BadValue(option, text, "WIDTHxHEIGHT in pixels");
    return {*width, *height};
}

std::pair<u16, u16> ParsePoint(const std::string& option, const std::string& text, u16 width, u16 height) {
    const auto parts = SplitText(text, ',');
    // A number that is none lies outside too.
    const u16 x = ParseNumber<u16>(parts.front()).value_or(width);
    const u16 y = ParseNumber<u16>(parts.back()).value_or(height);
    if (parts.size() != 2 || x >= width || y >= height)
        throw BadValue(option, text, fmt::format("X,Y inside the image of {} x {}", width, height));
    return {x, y};
}

std::pair<float, float> ParseRange(const std::string& option, const std::string& text) {
    const auto parts = SplitText(text, ',');
    const auto low = ParseFinite<float>(parts.front());
    const auto high = parts.size() == 2 ? ParseFinite<float>(parts.back()) : std::nullopt;
    if (!low || !high || !(*low < *high)) throw BadValue(option, text, "LOW,HIGH with LOW below HIGH");
    return {*low, *high};
}

float ParseTemperature(const std::string& option, const std::string& written) {
    const std::string text = WithoutDegrees(written);
    const char scale = text.empty() ? '\0' : static_cast<char>(text.back() & ~0x20);
    const auto value = ParseFinite<double>(std::string_view(text).substr(0, text.empty() ? 0 : text.size() - 1));
    const bool known = scale == 'C' || scale == 'F' || scale == 'K' || scale == 'R';
    constexpr double kHottest = 1e6;
    if (!known || !value || ToKelvin(*value, scale) < 0 || ToKelvin(*value, scale) > kHottest)
        throw BadValue(option, text, "a temperature with its scale C, F, K or R, as in 20C or 293.15K");
    return static_cast<float>(ToKelvin(*value, scale));
}

float ParseWithin(const std::string& option, const std::string& text, float low, float high) {
    const auto value = ParseFinite<float>(text);
    if (!value || *value < low || *value > high)
        throw BadValue(option, text, fmt::format("a number from {} to {}", low, high));
    return *value;
}

unsigned ParseJobs(const std::string& text) {
    if (text.empty()) return 0;
    const auto jobs = ParseNumber<unsigned>(text);
    if (!jobs || !*jobs || *jobs > 1024)
        throw UsageFault("--jobs: expected a number from 1 to 1024, found \"" + text + "\"");
    return *jobs;
}

}  // namespace ovix::app
