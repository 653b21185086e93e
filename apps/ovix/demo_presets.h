#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/ovix/demo.h"
#include "apps/ovix/demo_agreement.h"

namespace ovix::app {

/// One of the two frames, measured by the calibration of its preset alone.
struct SPresetAlone {
    double milliseconds = 0;  ///< integration time
    float low = 0, high = 0;  ///< calibrated range, degrees Celsius
    SAgreement agreement;
    double share = 0;  ///< of the merged frame's pixels
};

/// A scene that one integration time cannot hold: the longer one saturates in the hot bearing, the shorter one is
/// noisy where it is cool and below its calibrated range. Merged, each pixel is measured by the preset that suits it.
struct SPresetDemo {
    std::vector<SPresetAlone> presets;
    SAgreement merged;
    // Of the merged frame.
    std::vector<float> values;
    std::vector<u8> status;

    std::string Text(ETempType scale) const;
    Json Document() const;
};

/// Two frames of a cooled camera with a calibration for each preset through the library: corrected and merged with the
/// library's default thresholds, and converted by the map that says which preset each pixel came from.
SPresetDemo MeasurePresets(const SDemoOptions& options, std::span<const float> kelvin);

}  // namespace ovix::app
