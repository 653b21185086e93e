#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "apps/ovix/demo.h"
#include "apps/ovix/json.h"
#include "reduce/reduce.h"

namespace ovix::app {

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
    std::vector<float> values;
    std::vector<u8> status;
    SAgreement agreement;
    SAgreement recorded;  ///< of the same frame, read back from its recording
};

struct SDemoReport {
    SDemoOptions options;
    std::vector<SDemoFrame> frames = {};
    std::vector<std::pair<std::string, reduce::CStats>> figures = {};  ///< of the first frame and its regions
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
