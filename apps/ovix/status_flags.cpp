#include "apps/ovix/status_flags.h"

#include <fmt/format.h>

namespace ovix::app {

Json StatusLegend() {
    Json legend = Json::array();
    for (const SStatusFlag& flag : kStatusFlags)
        legend.push_back({{"bit", flag.bit}, {"name", flag.key}, {"meaning", flag.text}});
    return legend;
}

std::string StatusLegendText() {
    std::string text = "Status of a pixel, a sum of:\n";
    for (const SStatusFlag& flag : kStatusFlags)
        text += fmt::format("  {:>3}  {:<19}{}\n", flag.bit, flag.key, flag.text);
    return text + "    0  good";
}

}  // namespace ovix::app
