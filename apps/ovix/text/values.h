#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "measure/measure.h"

namespace ovix::app {

// The texts of option values. None depends on the locale. Those that take the option's name throw wrong usage that
// names the option, the text and what is expected.

/// The whole text as a number; nothing else fits.
template <class T>
std::optional<T> ParseNumber(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return {};
    return value;
}

/// The parts between the separators: one more than there are separators.
std::vector<std::string_view> SplitText(std::string_view text, char separator);

/// "640x480", each from 1 to 65535, together at most what a frame's 32-bit size can hold.
std::pair<u16, u16> ParseSize(const std::string& option, const std::string& text);

/// "x,y", a pixel of the image.
std::pair<u16, u16> ParsePoint(const std::string& option, const std::string& text, u16 width, u16 height);

/// "lo,hi" with lo below hi.
std::pair<float, float> ParseRange(const std::string& option, const std::string& text);

/// A temperature with its scale, "20C", "68F", "293.15K" or "527.67R" in either case, in kelvin; from 0 K to a
/// million.
float ParseTemperature(const std::string& option, const std::string& text);

/// A number within limits, both included.
float ParseWithin(const std::string& option, const std::string& text, float low, float high);

/// The value of `--jobs`, from 1 to 1024; 0 where nothing is said.
unsigned ParseJobs(const std::string& text);

}  // namespace ovix::app
