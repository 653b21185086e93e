#pragma once

#include <filesystem>

#include "core/core.h"

namespace ovix::app {

/// The regions of the scene want at least so many pixels in both directions.
inline constexpr u16 kDemoLeastSide = 32;

struct SDemoOptions {
    std::filesystem::path directory = "ovix-demo";  ///< for the pictures; made when missing
    u16 width = 640;
    u16 height = 480;
    ETempType scale = Celsius;
    bool overwrite = true;  ///< the demo replaces its own pictures
    bool json = false;      ///< one JSON document instead of tables
};

/// The main job end to end: a scene as a K410 camera sends it in three forms, through the library, to tables and
/// pictures. Answers the exit status: `ExitBadData` when a temperature that the library calls good is 0.1 K or more
/// away from the scene's. Failures to write throw `CAppError`.
int RunDemo(const SDemoOptions& options);

}  // namespace ovix::app
