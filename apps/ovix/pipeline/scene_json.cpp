#include "apps/ovix/pipeline/scene_json.h"

#include <charconv>

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

}  // namespace ovix::app
