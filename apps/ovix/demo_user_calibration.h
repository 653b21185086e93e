#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "apps/ovix/demo.h"
#include "apps/ovix/demo_frame.h"

namespace ovix::app {

/// The frame measured by a calibration of the user's own, fitted to a few temperatures that are known of the scene.
struct SUserCalibrationDemo {
    u32 points = 0;
    int order = 0;              ///< of the polynomial from counts to radiance
    double rms = 0;             ///< of the points' residuals, kelvin
    double largest = 0;         ///< likewise
    SAgreement agreement = {};  ///< of the whole frame

    std::string Text(const SAgreement& factory) const;
    Json Document() const;
};

/// Fits the calibration to the frame's corrected counts, as if the scene were of black bodies with nothing between them
/// and the camera: what it learns so includes their emissivity and the air. Writes it to `path` and measures the whole
/// frame by what is read back from there.
SUserCalibrationDemo CalibrateAndMeasure(const std::filesystem::path& path, SDemoFrame& frame,
                                         std::span<const float> kelvin, const SDemoOptions& options);

}  // namespace ovix::app
