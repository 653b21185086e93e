#include "apps/ovix/pipeline/pixel_walk.h"

#include <memory>

#include "apps/ovix/pipeline/calibration_json.h"
#include "apps/ovix/pipeline/measurement.h"
#include "apps/ovix/pipeline/unit_choice.h"

namespace ovix::app {

namespace {

using CScene = reduce::CObjectParametersReduceObject;

struct SSceneField {
    const char* name;
    const char* unit;
    float CScene::*value;
    std::optional<float> SSceneValues::*given;
    bool forUser = false;  ///< a user calibration knows of it
};

constexpr SSceneField kScene[] = {
    {"emissivity", "", &CScene::emissivity, &SSceneValues::emissivity, true},
    {"distance", "m", &CScene::distance, &SSceneValues::distance},
    {"reflected temperature", "K", &CScene::reflectedTemp, &SSceneValues::reflectedTemp},
    {"atmosphere temperature", "K", &CScene::atmosphereTemp, &SSceneValues::atmosphereTemp},
    {"relative humidity", "", &CScene::relativeHumidity, &SSceneValues::relativeHumidity},
    {"external optics temperature", "K", &CScene::extOpticsTemp, &SSceneValues::extOpticsTemp},
    {"external optics transmission", "", &CScene::extOpticsTrans, &SSceneValues::extOpticsTrans},
    {"atmosphere transmission", "", &CScene::atmosphereTrans, &SSceneValues::atmosphereTrans, true},
};

bool IsUserUnit(EUnit unit) { return unit == RadianceUser || unit == TemperatureUser; }

class CWalk {
  public:
    CWalk(IFrameSource& source, u64 frame, u32 pixel) : source_(source), frame_(frame), pixel_(pixel) {}

    /// Measures the frame in the quantity of the options and adds the step.
    std::unique_ptr<CMeasurement> Step(SMeasureOptions options, EQuantity quantity, const char* name = nullptr) {
        options.quantity = quantity;
        auto measurement = std::make_unique<CMeasurement>(source_, std::move(options));
        const SMeasuredFrame frame = measurement->Measure(frame_);
        const EUnit unit = measurement->Unit();
        walk.preset = measurement->Preset();
        walk.steps.push_back({name ? name : UnitWords(unit), unit, frame.values[pixel_], frame.status[pixel_]});
        return measurement;
    }

    SPixelWalk walk;

  private:
    IFrameSource& source_;
    u64 frame_;
    u32 pixel_;
};

/// `recorded` and `used` are the scenes as the frame brought it and as the conversion left it, if there are any.
std::vector<SSceneParameter> Scene(const SSceneValues& given, const CScene* recorded, const CScene* used, bool byUser) {
    const CScene defaults;
    const CScene& scene = used ? *used : recorded ? *recorded : defaults;
    std::vector<SSceneParameter> parameters;
    for (const SSceneField& field : kScene) {
        if (byUser && !field.forUser) continue;
        const char* from = given.*field.given ? "command line" : recorded && recorded->fromSource ? "file" : "default";
        parameters.push_back({field.name, field.unit, scene.*field.value, from});
    }
    // The last of them is 0 where the model is to compute it. That of the user computes none and takes 1.
    SSceneParameter& transmission = parameters.back();
    if (used && transmission.value == 0) {
        transmission.value = used->estimatedAtmosphereTrans;
        transmission.from = byUser ? "default" : "computed";
    }
    return parameters;
}

}  // namespace

SPixelWalk WalkPixel(IFrameSource& source, const SMeasureOptions& options, u64 frame, u32 pixel) {
    CWalk walk(source, frame, pixel);
    SMeasureOptions bare;
    bare.calibration = options.calibration;
    bare.userCalibration = options.userCalibration;
    const auto raw = walk.Step(bare, EQuantity::Counts, "counts as recorded");
    const auto recorded = raw->Objects().GetObjectParameters(false);
    if (!options.corrections.empty()) walk.Step(options, EQuantity::Counts, "counts, corrected");

    const TArray<EUnit> offered = raw->Units();
    if (options.quantity || options.calibration) ChooseUnit(offered, options);  // says what the source can give instead
    TSharedPtr<CScene> used;
    bool byUser = false;
    for (const EQuantity quantity : {EQuantity::Signal, EQuantity::Radiance, EQuantity::Temperature}) {
        if (options.quantity == EQuantity::Counts) break;
        const auto unit = FindUnit(offered, quantity, options.calibration);
        // A user calibration knows no object signal: that of the factory is no step on its way.
        const bool passes = quantity == EQuantity::Signal && options.calibration == ECalibration::User;
        if (unit && (!passes || options.quantity == quantity)) {
            const auto measurement = walk.Step(options, quantity);
            used = measurement->Objects().GetObjectParameters(false);
            byUser = IsUserUnit(*unit);
            walk.walk.calibration = byUser ? UserCalibrationJson(measurement->Objects(), measurement->Preset())
                                           : FactoryCalibrationJson(measurement->Objects(), measurement->Preset());
        }
        if (options.quantity == quantity) break;
    }
    walk.walk.scene = Scene(options.scene, recorded.ptr(), used.ptr(), byUser);
    if (byUser && options.userCalibration) walk.walk.calibrationFrom = "command line";
    return std::move(walk.walk);
}

}  // namespace ovix::app
