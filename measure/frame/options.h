#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// What is asked for by one word; by which calibration is another question.
enum class EQuantity : u8 { Counts, Signal, Radiance, Temperature, Red, Green, Blue, Average };
enum class ECalibration : u8 { Factory, User };

/// Who said a value.
enum class EOrigin : u8 { Frame, File, Default, Caller, Computed };

/// Values that replace those recorded with the source. Temperatures in kelvin, the distance in metres, transmissions,
/// emissivity and humidity as shares of 1.
struct SSceneValues {
    std::optional<float> emissivity = {};
    std::optional<float> distance = {};
    std::optional<float> reflectedTemp = {};
    std::optional<float> atmosphereTemp = {};
    std::optional<float> atmosphereTrans = {};  ///< 0 asks the model to compute it
    std::optional<float> relativeHumidity = {};
    std::optional<float> extOpticsTemp = {};
    std::optional<float> extOpticsTrans = {};

    bool operator==(const SSceneValues&) const = default;
};

/// The stem of correction tables, for the frames of one preset or of all.
struct SCorrectionFiles {
    std::optional<u8> preset = {};
    std::string stem = {};
};

/// The limits to which corrected counts are clamped.
struct SClip {
    bool on = true;
    float low = 0;
    float high = 16383;
};

/// What is to be made of the frames of a source.
struct SMeasureOptions {
    std::optional<EQuantity> quantity = {};  ///< none: temperature where the source can give it, else what it stores
    std::optional<ECalibration> calibration = {};  ///< none: factory where there is one, else user
    ETempType scale = Celsius;
    SSceneValues scene = {};
    std::vector<SCorrectionFiles> corrections = {};
    std::optional<CRCalFile> userCalibration = {};  ///< takes the place of the source's
    std::optional<SClip> clip = {};                 ///< none: as the library does by itself
    bool correct = true;                            ///< false: counts as recorded, whatever tables there are
    /// For the decoding of one compressed frame, which a damaged one may keep busy.
    std::chrono::milliseconds decodePatience{20'000};
};

}  // namespace ovix::measure
