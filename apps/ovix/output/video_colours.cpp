#include "apps/ovix/output/video_colours.h"

#include <algorithm>
#include <cmath>

namespace ovix::app {

CVideoColours::CVideoColours(const measure::CMeasurement& measurement) {
    using measure::EQuantity;
    const bool isChosen = measurement.Options().quantity.has_value();
    if (isChosen || !measurement.Source().IsNumbered() || measurement.Unit() != RGBAverage) return;
    std::vector<measure::CMeasurement> channels;
    for (const EQuantity quantity : {EQuantity::Red, EQuantity::Green, EQuantity::Blue}) {
        measure::SMeasureOptions options = measurement.Options();
        options.quantity = quantity;
        channels.emplace_back(measurement.Source(), std::move(options));
    }
    channels_ = std::make_shared<const std::vector<measure::CMeasurement>>(std::move(channels));
}

std::vector<u32> CVideoColours::Of(const measure::CFrame& frame) const {
    std::vector<u32> colours(frame.values.size());
    measure::CFrame channel;
    for (const measure::CMeasurement& measurement : *channels_) {
        measurement.Measure(frame.number, channel);
        std::ranges::transform(colours, channel.values, colours.begin(), [](u32 before, float value) {
            return before << 8 | static_cast<u32>(std::lround(std::clamp(value, 0.0f, 255.0f)));
        });
    }
    return colours;
}

}  // namespace ovix::app
