#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "apps/ovix/demo.h"
#include "apps/ovix/demo_frame.h"
#include "apps/ovix/demo_presets.h"
#include "apps/ovix/demo_user_calibration.h"
#include "apps/ovix/json.h"
#include "reduce/reduce.h"

namespace ovix::app {

struct SDemoReport {
    SDemoOptions options;
    std::vector<SDemoFrame> frames = {};
    std::vector<std::pair<std::string, reduce::CStats>> figures = {};  ///< of the first frame and its regions
    SPresetDemo presets = {};
    SUserCalibrationDemo user = {};
    std::vector<std::filesystem::path> files = {};

    bool Agrees() const;
};

/// The values that the temperatures rest on, each with its unit in its key.
Json DescribeScene(const SDemoFrame& frame);
/// The same for a reader, in one line.
std::string CaptionOf(const SDemoFrame& frame, ETempType scale);
/// To the standard output, as tables or as one JSON document.
void PrintReport(const SDemoReport& report);

}  // namespace ovix::app
