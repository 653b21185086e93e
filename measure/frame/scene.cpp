#include "measure/frame/scene.h"

#include <charconv>

namespace ovix::measure {

namespace {

using CScene = reduce::CObjectParametersReduceObject;

struct SCallersValue {
    float CScene::*member;
    std::optional<float> SSceneValues::*value;
    bool forUser = false;  ///< a user calibration knows of it
};

constexpr SCallersValue kCallersValues[] = {
    {&CScene::emissivity, &SSceneValues::emissivity, true},
    {&CScene::distance, &SSceneValues::distance},
    {&CScene::reflectedTemp, &SSceneValues::reflectedTemp},
    {&CScene::atmosphereTemp, &SSceneValues::atmosphereTemp},
    {&CScene::atmosphereTrans, &SSceneValues::atmosphereTrans, true},
    {&CScene::relativeHumidity, &SSceneValues::relativeHumidity},
    {&CScene::extOpticsTemp, &SSceneValues::extOpticsTemp},
    {&CScene::extOpticsTrans, &SSceneValues::extOpticsTrans},
};

const SCallersValue& CallersValue(const reduce::SObjectParameter& row) {
    return *std::ranges::find(kCallersValues, row.member, &SCallersValue::member);
}

}  // namespace

CSceneTrail::CSceneTrail(reduce::CReduceObjectArray& objects) : objects_(objects) {
    const auto scene = objects.GetObjectParameters(false);
    recorded_ = scene && scene->fromSource;
    if (scene) scene->fromSource = false;  // set again by a frame that brings its own
}

SceneOrigins CSceneTrail::Finish(const CSource& source, const SSceneValues& values) {
    SceneOrigins origins;
    const auto brought = objects_.GetObjectParameters(false);
    const bool byFrame = brought && brought->fromSource;
    origins.fill(byFrame ? EOrigin::Frame : recorded_ ? EOrigin::File : EOrigin::Default);
    if (brought) brought->fromSource = byFrame || recorded_;
    source.Overrule(objects_);

    const bool callerSpeaks = values != SSceneValues{};
    const auto scene = objects_.GetObjectParameters(callerSpeaks);
    if (callerSpeaks) scene->fromSource = false;
    std::size_t i = 0;
    for (const reduce::SObjectParameter& row : reduce::ObjectParameters()) {
        if (source.OverruledScene() >> i & 1) origins[i] = EOrigin::File;
        if (const auto& value = values.*CallersValue(row).value) {
            (*scene).*row.member = *value;
            origins[i] = EOrigin::Caller;
        }
        ++i;
    }
    return origins;
}

void PutCallersValues(CScene& scene, const SSceneValues& values) {
    for (const SCallersValue& row : kCallersValues) {
        if (const auto& value = values.*row.value) scene.*row.member = *value;
    }
}

std::vector<SParameter> SceneParameters(const CScene& scene, const SceneOrigins& origins, const CScene* used,
                                        bool byUser) {
    std::vector<SParameter> parameters;
    auto origin = origins.begin();
    for (const reduce::SObjectParameter& row : reduce::ObjectParameters()) {
        SParameter parameter{row.key, row.name, row.unit, ShortestDouble(scene.*row.member), *origin++};
        // 0 asks the model to compute it. That of the user computes none and takes 1.
        if (used && row.member == &CScene::atmosphereTrans && parameter.value == 0) {
            parameter.value = ShortestDouble(used->estimatedAtmosphereTrans);
            parameter.origin = byUser ? EOrigin::Default : EOrigin::Computed;
        }
        if (!byUser || CallersValue(row).forUser) parameters.push_back(std::move(parameter));
    }
    return parameters;
}

double ShortestDouble(float value) {
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value).ptr;
    double result = value;
    std::from_chars(text, end, result);
    return result;
}

}  // namespace ovix::measure
