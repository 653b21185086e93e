#include "measure/frame/difference.h"

#include <charconv>
#include <cmath>
#include <map>

#include "measure/error.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

using Names = std::map<std::string, std::string>;

std::string NumberText(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

/// All that is said of a frame beside its pixels.
Names ValuesOf(const CFrame& frame) {
    Names values;
    const auto info = frame.Objects().GetFrameInfo(frame.preset.value_or(0), false);
    for (u32 i = 0; info && i < info->NumEntries(); ++i) {
        const auto entry = info->GetAt(i);
        const std::string unit = entry.unit.GetUTF8();
        values[entry.name.GetUTF8()] = entry.value.GetUTF8() + (unit.empty() ? "" : ' ' + unit);
    }
    // The fixed rows hold something where the frame carries nothing.
    values.erase("Time");
    values.erase("FrameNumber");
    if (frame.time) values["time"] = TimeText(*frame.time);
    if (frame.counter) values["counter"] = Say(*frame.counter);
    if (frame.preset) values["preset"] = Say(*frame.preset);
    for (const SParameter& parameter : frame.Parameters())
        values[parameter.key] = NumberText(parameter.value) + (parameter.unit.empty() ? "" : ' ' + parameter.unit);
    return values;
}

void CompareValues(const CFrame& a, const CFrame& b, SFrameDifference& difference) {
    const Names ofA = ValuesOf(a), ofB = ValuesOf(b);
    const auto in = [](const Names& names, const std::string& name) {
        const auto found = names.find(name);
        return found == names.end() ? std::string() : found->second;
    };
    Names all = ofA;
    all.insert(ofB.begin(), ofB.end());
    for (const auto& [name, ignored] : all) {
        if (in(ofA, name) != in(ofB, name)) difference.values.push_back({name, in(ofA, name), in(ofB, name)});
    }
}

void Require(bool same, const std::string& what, const std::string& a, const std::string& b) {
    if (!same)
        throw CError(
            {.id = EError::WrongArgument, .problem = "frames of different " + what, .expected = a, .found = b});
}

}  // namespace

SFrameDifference Compare(const CFrame& a, const CFrame& b, double tolerance) {
    Require(a.width == b.width && a.height == b.height, "sizes", Say(a.width, " x ", a.height),
            Say(b.width, " x ", b.height));
    Require(a.unit == b.unit && a.scale == b.scale, "units", UnitWords(a.unit), UnitWords(b.unit));
    SFrameDifference difference;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        difference.status += a.status[i] != b.status[i];
        const bool isNumber = !std::isnan(a.values[i]);
        if (isNumber == std::isnan(b.values[i])) {
            ++difference.pixels;
            continue;
        }
        const double apart = isNumber ? std::abs(double{a.values[i]} - double{b.values[i]}) : 0;
        difference.pixels += apart > tolerance;
        if (!(apart > difference.largest)) continue;
        difference.largest = apart;
        difference.at = {static_cast<i32>(i % a.width), static_cast<i32>(i / a.width)};
        difference.a = a.values[i];
        difference.b = b.values[i];
    }
    CompareValues(a, b, difference);
    return difference;
}

}  // namespace ovix::measure
