#include "apps/ovix/output/cf_attributes.h"

#include <algorithm>
#include <cctype>
#include <limits>

#include "apps/ovix/status_flags.h"

namespace ovix::app {

std::string VariableName(const SUnitText& unit) {
    std::string name = unit.quantity;
    for (char& c : name) c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name.empty() ? "values" : name;
}

Json GroupAttributes(const SSeries& series) {
    return {{"Conventions", "CF-1.8"},
            {"title", series.title},
            {"history", std::string("ovix ") + OVIX_VERSION},
            {"parameters", JsonText(series.parameters)}};
}

Json ValueAttributes(const SSeries& series, double step) {
    Json attributes = {{"_ARRAY_DIMENSIONS", {"time", "y", "x"}},
                       {"units", series.unit.symbol},
                       {"long_name", series.unit.quantity},
                       {"ancillary_variables", "status"}};
    if (step > 0) attributes["scale_factor"] = step;
    return attributes;
}

Json StatusAttributes() {
    Json masks = Json::array();
    std::string meanings;
    for (const SStatusFlag& flag : kStatusFlags) {
        masks.push_back(flag.bit);
        if (!meanings.empty()) meanings += ' ';
        meanings += flag.key;
    }
    return {{"_ARRAY_DIMENSIONS", {"time", "y", "x"}},
            {"long_name", "status of each pixel"},
            {"flag_masks", masks},
            {"flag_meanings", meanings}};
}

Json TimeAttributes(bool timed) {
    if (!timed) return ColumnAttributes("number of the frame; frames carry no time");
    return {{"_ARRAY_DIMENSIONS", {"time"}},
            {"standard_name", "time"},
            {"units", "nanoseconds since 1970-01-01"},
            {"calendar", "proleptic_gregorian"}};
}

Json ColumnAttributes(const char* meaning) { return {{"_ARRAY_DIMENSIONS", {"time"}}, {"long_name", meaning}}; }

i64 NanosecondsOf(measure::Time time) {
    constexpr i64 kTick = 100;
    constexpr i64 kNone = std::numeric_limits<i64>::min();
    const i64 ticks = time.time_since_epoch().count();
    const bool fits = ticks > kNone / kTick && ticks < std::numeric_limits<i64>::max() / kTick;
    return fits ? ticks * kTick : kNone;
}

}  // namespace ovix::app
