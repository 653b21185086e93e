#pragma once

#include "measure/frame/measurement.h"
#include "measure/frame/prepared.h"
#include "measure/frame/scene.h"

namespace ovix::measure {

/// What a measurement works with on one frame, kept from one to the next for its memory alone.
struct CFrame::SWork {
    SRawFrame raw;
    reduce::CReduceObjectArray objects;
    SceneOrigins origins = {};
    Presets presets = {};                     ///< of all frames that are measured together
    std::vector<u8> key;                      ///< of the calibration
    std::shared_ptr<const void> measurement;  ///< whose `prepared` is
    std::shared_ptr<const CPrepared> prepared;
    std::vector<u8> pixels;
    std::vector<float> corrected;
    std::array<std::vector<float>, reduce::CConvertContext::PresetCount> counts;  ///< to be merged
    std::vector<float> merged;
    std::vector<u8> presetMap;
};

}  // namespace ovix::measure
