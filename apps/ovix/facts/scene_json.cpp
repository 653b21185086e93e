#include "apps/ovix/facts/scene_json.h"

#include <algorithm>
#include <charconv>

#include "apps/ovix/facts/calibration_json.h"
#include "apps/ovix/facts/provenance.h"

namespace ovix::app {

double ShortestDouble(float value) {
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value).ptr;
    double result = value;
    std::from_chars(text, end, result);
    return result;
}

Json SceneJson(const reduce::CObjectParametersReduceObject& scene) {
    return {
        {"recorded", scene.fromSource},
        {"emissivity", ShortestDouble(scene.emissivity)},
        {"distanceMetres", ShortestDouble(scene.distance)},
        {"reflectedTemperatureKelvin", ShortestDouble(scene.reflectedTemp)},
        {"atmosphereTemperatureKelvin", ShortestDouble(scene.atmosphereTemp)},
        {"relativeHumidity", ShortestDouble(scene.relativeHumidity)},
        {"atmosphereTransmission", ShortestDouble(scene.atmosphereTrans)},  // 0: the model computes it
        {"usedAtmosphereTransmission", ShortestDouble(scene.estimatedAtmosphereTrans)},
        {"externalOpticsTemperatureKelvin", ShortestDouble(scene.extOpticsTemp)},
        {"externalOpticsTransmission", ShortestDouble(scene.extOpticsTrans)},
    };
}

const char* OriginWord(measure::EOrigin origin) {
    switch (origin) {
        case measure::EOrigin::Frame:
            return "frame";
        case measure::EOrigin::File:
            return "file";
        case measure::EOrigin::Default:
            return "default";
        case measure::EOrigin::Caller:
            return "command line";
        case measure::EOrigin::Computed:
            return "computed";
    }
    return "default";
}

namespace {

bool IsByUser(EUnit unit) { return unit == RadianceUser || unit == TemperatureUser; }

/// The constants that the values were worked out with, of each preset that the frame is made of.
Json CalibrationsJson(const measure::CFrame& frame, const std::vector<u8>& merged) {
    const std::vector<u8> presets = merged.empty() ? std::vector<u8>{frame.preset.value_or(0)} : merged;
    Json calibrations = Json::array();
    for (const u8 preset : presets) {
        Json calibration{{"preset", preset}};
        calibration.update(CalibrationJson(IsByUser(frame.unit)
                                               ? measure::UserCalibration(frame.Objects(), preset)
                                               : measure::FactoryCalibration(frame.Objects(), preset)));
        calibrations.push_back(std::move(calibration));
    }
    return calibrations;
}

}  // namespace

Json ParametersJson(const measure::CMeasurement& measurement, const measure::CFrame& frame) {
    const measure::CSource& source = measurement.Source();
    Json parameters = {{"source", source.Name()},
                       {"pixelType", source.Format().pixelTypeName},
                       {"unit", measure::UnitWords(frame.unit)}};
    for (const measure::SCorrectionFiles& files : measurement.Options().corrections)
        parameters["correction"].push_back(files.stem);
    if (measurement.Options().corrections.empty() && measurement.Corrects())
        parameters["correction"].push_back("as recorded");
    std::vector<u8> presets = frame.mergedPresets;
    std::ranges::sort(presets);
    for (const u8 preset : presets) parameters["mergedPresets"].push_back(preset);

    parameters["provenance"] = ProvenanceJson(source, measurement.Options());

    const std::vector<measure::SParameter> used = frame.Parameters();
    const auto scene = frame.Objects().GetObjectParameters(false);
    if (!scene || used.empty()) return parameters;
    const Json all = SceneJson(*scene);
    if (IsByUser(frame.unit)) {
        for (const char* key : {"emissivity", "atmosphereTransmission", "usedAtmosphereTransmission"})
            parameters[key] = all[key];
    } else {
        parameters.update(all);
    }
    for (const measure::SParameter& value : used) parameters["origins"][value.key] = OriginWord(value.origin);
    parameters["calibrations"] = CalibrationsJson(frame, presets);
    return parameters;
}

}  // namespace ovix::app
