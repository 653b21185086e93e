#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/core.h"
#include "reduce/reduce.h"

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

/// A good pixel this far from the scene, in kelvin, is no measurement any more.
inline constexpr double kDemoLimitKelvin = 0.1;

/// How far measured temperatures are from those of the scene; differences in kelvin.
struct SAgreement {
    u64 good = 0;  ///< pixels with status 0 that the detector itself has measured
    double max = 0;
    double rms = 0;
    u64 replaced = 0;  ///< bad pixels, which show a neighbour's temperature
    double replacedMax = 0;
    u64 flagged = 0;  ///< pixels with a status

    bool Holds() const { return good > 0 && max < kDemoLimitKelvin; }
};

/// One frame, measured.
struct SDemoFrame {
    std::string form;
    std::string pixelType;
    std::vector<u8> raw;  ///< as the camera sent it
    reduce::CReduceObjectArray objects;
    TSharedPtr<reduce::CCorrectionReduceObject> correction;
    std::vector<u16> counts;  ///< corrected
    std::vector<float> values;
    std::vector<u8> status;
    SAgreement agreement;
    SAgreement recorded;  ///< of the same frame, read back from its recording
};

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
};

/// The frame measured by a calibration of the user's own, fitted to a few temperatures that are known of the scene.
struct SUserCalibrationDemo {
    u32 points = 0;
    int order = 0;              ///< of the polynomial from counts to radiance
    double rms = 0;             ///< of the points' residuals, kelvin
    double largest = 0;         ///< likewise
    SAgreement agreement = {};  ///< of the whole frame
};

/// All that the demo found out.
struct SDemoReport {
    SDemoOptions options;
    std::vector<SDemoFrame> frames = {};
    std::vector<std::pair<std::string, reduce::CStats>> figures = {};  ///< of the first frame and its regions
    SPresetDemo presets = {};
    SUserCalibrationDemo user = {};
    std::vector<std::filesystem::path> files = {};

    bool Agrees() const;
};

/// The main job end to end: a scene as a K410 camera sends it in three forms, through the library, to tables and
/// pictures. Answers the exit status: `ExitBadData` when a temperature that the library calls good is 0.1 K or more
/// away from the scene's. Failures to write throw `CAppError`.
int RunDemo(const SDemoOptions& options);

/// The pictures and files of numbers of the first frame, and the merged one as a picture; answers their paths.
std::vector<std::filesystem::path> WritePictures(const SDemoReport& report);
/// To the standard output, as tables or as one JSON document.
void PrintReport(const SDemoReport& report);

}  // namespace ovix::app
