#include "apps/ovix/pipeline/measurement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "apps/ovix/fault.h"
#include "apps/ovix/pipeline/correction_tables.h"
#include "apps/ovix/pipeline/frame_time.h"
#include "apps/ovix/pipeline/scene_json.h"
#include "apps/ovix/pipeline/scene_override.h"
#include "apps/ovix/pipeline/unit_choice.h"
#include "apps/ovix/user_calibration.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

/// Objects for which no table is computed anew: they say what a source is, not how its counts are converted, or no
/// frame brings one.
bool IsDescriptive(const reduce::IReduceObject& object) {
    static const CString names[] = {L"SourceInfo",       L"FOV", L"Correction", L"CurlewCameraInfo",
                                    L"DunlinCameraInfo", L"RCal"};
    return std::any_of(std::begin(names), std::end(names),
                       [&](const CString& name) { return name.Equals(object.GetName()); });
}

}  // namespace

CMeasurement::CMeasurement(IFrameSource& source, SMeasureOptions options)
    : source_(source), options_(std::move(options)), decode_(source.Format()) {
    source_.Describe(objects_);
    if (options_.userCalibration) PutUserCalibration(*options_.userCalibration, objects_);
    context_.setReduceObjs(&objects_);
    for (const SCorrectionFiles& files : options_.corrections) LoadCorrectionTables(objects_, files, source_.Format());
    const u32 pixels = source_.Format().PixelCount();
    const bool corrects = HasCorrection(objects_, source_.Format());
    if (corrects) corrected_.resize(pixels);
    if (options_.clip) {
        if (!corrects) throw UsageFault("--clip goes with --correction");
        const auto settings = objects_.GetCorrectionCfg(true);
        settings->clip = options_.clip->on;
        settings->minimum = options_.clip->low;
        settings->maximum = options_.clip->high;
    }
    values_.resize(pixels);
    status_.resize(pixels);
}

template <class Step>
void CMeasurement::OfFrame(u64 number, Step step) {
    try {
        step();
    } catch (const CFault& fault) {
        throw fault.Of(source_.Name(), number);
    }
}

SMeasuredFrame CMeasurement::Measure(u64 number) {
    presets_ = {};
    OfFrame(number, [&] {
        DecodeFrame(number);
        EnablePreset();
    });
    ChooseUnitOnce();
    OfFrame(number, [&] {
        UpdateContext();
        ConvertPixels();
    });
    return {number, values_, status_};
}

SMeasuredFrame CMeasurement::MeasureMerged(std::span<const u64> numbers) {
    presets_ = {};
    std::optional<CDateTime> begin;
    for (const u64 number : numbers) {
        OfFrame(number, [&] {
            DecodeFrame(number);
            EnablePreset();
            counts_[preset_].resize(values_.size());
            if (!ConvertArray({counts_[preset_].data(), Flt32}, decode_.Pixels(), source_.Format().PixelCount()))
                throw CFault({.problem = "pixels of this type cannot be merged"});
        });
        if (number == numbers.front()) begin = time_;
    }
    time_ = begin;
    ChooseUnitOnce();
    OfFrame(numbers.front(), [&] {
        UpdateContext();
        ConvertMerged();
    });
    return {numbers.front(), values_, status_};
}

void CMeasurement::DecodeFrame(u64 number) {
    source_.Read(number, frame_);
    const CFrameClock clock;
    preset_ = decode_.Decode(frame_, objects_);
    const auto info = objects_.GetFrameInfo(preset_, false);
    time_ = info ? clock.Carried(info->time) : std::nullopt;
    source_.Overrule(objects_);
    OverrideScene(objects_, options_.scene);
}

void CMeasurement::EnablePreset() {
    if (preset_ >= presets_.size())
        throw CFault({.expected = "a preset from 0 to 7", .found = fmt::format("{}", preset_)});
    presets_[preset_] = true;
}

void CMeasurement::ChooseUnitOnce() {
    if (!unitChosen_) unit_ = ChooseOfferedUnit();
    unitChosen_ = true;
}

TArray<EUnit> CMeasurement::Units() const {
    TArray<EUnit> offered;
    context_.GetUnits(offered);
    return offered;
}

EUnit CMeasurement::ChooseOfferedUnit() const {
    try {
        return ChooseUnit(Units(), options_);
    } catch (const CFault& fault) {
        SFault facts = fault.Facts();
        facts.file = source_.Name();
        throw CFault(std::move(facts));
    }
}

u32 CMeasurement::CalibrationMark() {
    CCalcCRC32File all;
    for (u32 i = 0; i < objects_.GetSize(); ++i) {
        const auto object = objects_.GetAt(i);
        u32 crc = 0;
        u64 size = 0;
        if (!object->ShouldPersist(0) || IsDescriptive(*object)) continue;
        if (object->CalcCRC(crc, size, 0)) all.PutUInt32(crc);
        all.PutBool(object->valid);
    }
    return all.GetCRC();
}

void CMeasurement::UpdateContext() {
    if (ready_ && presets_ == readyPresets_ && CalibrationMark() == mark_) return;
    ready_ = false;
    if (!context_.SetUnit(unit_, options_.scale))
        throw CFault({.problem = "the frame carries no calibration for " + UnitWords(unit_)});
    if (IsUserUnit()) RequireUserPresets();
    if (!context_.Update(presets_.data(), static_cast<u8>(presets_.size()), 0))
        throw CFault({.problem = "the frame's calibration is not usable"});
    // The converter has written the transmission that it used to the objects, so the mark is that of after.
    mark_ = CalibrationMark();
    readyPresets_ = presets_;
    ready_ = true;
}

void CMeasurement::ConvertPixels() {
    const u32 count = source_.Format().PixelCount();
    STypedData pixels = decode_.Pixels();
    const STypedData corrected{corrected_.data(), Flt32};
    if (context_.needToApplyNUC() && !context_.ApplyNUC(pixels, corrected, count, pixels))
        throw CFault({.problem = "the correction tables cannot be used"});
    if (!context_.Convert(pixels, STypedData{values_.data(), Flt32}, status_.data(), count))
        throw CFault({.problem = "the pixels cannot be converted to " + UnitWords(unit_)});
}

void CMeasurement::ConvertMerged() {
    const u32 count = source_.Format().PixelCount();
    STypedData frames[reduce::CConvertContext::PresetCount];
    for (std::size_t i = 0; i < std::size(frames); ++i) frames[i] = {counts_[i].data(), Flt32};
    merged_.resize(count);
    presetMap_.resize(count);
    const STypedData merged{merged_.data(), Flt32};
    if (!context_.Abate(frames, count, merged, presetMap_.data()))
        throw CFault({.problem = "the frames cannot be merged"});
    if (!context_.Convert(merged, presetMap_.data(), STypedData{values_.data(), Flt32}, status_.data(), count))
        throw CFault({.problem = "the merged pixels cannot be converted to " + UnitWords(unit_)});
}

/// The library takes a preset without a polynomial for one whose counts are radiances.
void CMeasurement::RequireUserPresets() {
    const auto calibration = objects_.Get<reduce::CRCalReduceObject>(-1, false);
    for (std::size_t preset = 0; preset < presets_.size(); ++preset) {
        int order = 0;
        if (presets_[preset] && !(calibration && calibration->cal.GetPolyOrder(static_cast<int>(preset), order)))
            throw CFault({.problem = fmt::format("the user calibration says nothing of preset {}", preset)});
    }
}

Json CMeasurement::Parameters() {
    Json parameters = {
        {"source", source_.Name()}, {"pixelType", source_.Format().pixelTypeName}, {"unit", UnitWords(unit_)}};
    for (const SCorrectionFiles& files : options_.corrections) parameters["correction"].push_back(files.stem);
    if (options_.corrections.empty() && !corrected_.empty()) parameters["correction"].push_back("as recorded");
    if (!presetMap_.empty()) {
        for (std::size_t preset = 0; preset < presets_.size(); ++preset) {
            if (presets_[preset]) parameters["mergedPresets"].push_back(preset);
        }
    }
    const auto scene = objects_.GetObjectParameters(false);
    if (scene && context_.canChangeObjectParameters()) parameters.update(SceneJson(*scene));
    if (scene && IsUserUnit()) {
        const Json all = SceneJson(*scene);
        for (const char* key : {"emissivity", "atmosphereTransmission", "usedAtmosphereTransmission"})
            parameters[key] = all[key];
    }
    return parameters;
}

}  // namespace ovix::app
