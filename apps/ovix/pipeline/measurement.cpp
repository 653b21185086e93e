#include "apps/ovix/pipeline/measurement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "apps/ovix/fault.h"
#include "apps/ovix/pipeline/frame_time.h"
#include "apps/ovix/pipeline/scene_json.h"
#include "apps/ovix/pipeline/unit_choice.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

/// Objects that say what a source is, not how its counts are converted: a frame may change them without a table being
/// computed anew.
bool IsDescriptive(const reduce::IReduceObject& object) {
    static const CString names[] = {L"SourceInfo", L"FOV", L"Correction", L"CurlewCameraInfo", L"DunlinCameraInfo"};
    return std::any_of(std::begin(names), std::end(names),
                       [&](const CString& name) { return name.Equals(object.GetName()); });
}

/// The tables whose files stand under the stem, as the library finds them: bits of `ECorrectionTables`.
u8 TablesOnDisk(const std::string& stem) {
    constexpr std::pair<const char*, u8> kFiles[] = {
        {".mvg", reduce::CorrectionGain}, {".mvo", reduce::CorrectionOffset}, {".mvb", reduce::CorrectionBadPixels}};
    const CString given(std::filesystem::path(stem).extension().c_str());
    const bool namesOne = std::any_of(std::begin(kFiles), std::end(kFiles),
                                      [&](const auto& file) { return given.EqualsNoCase(CString(file.first)); });
    const std::string base = namesOne ? std::filesystem::path(stem).replace_extension().string() : stem;
    u8 tables = 0;
    for (const auto& [extension, table] : kFiles) {
        std::error_code ignored;
        if (std::filesystem::exists(base + extension, ignored)) tables = static_cast<u8>(tables | table);
    }
    return tables;
}

}  // namespace

CMeasurement::CMeasurement(IFrameSource& source, SMeasureOptions options)
    : source_(source), options_(std::move(options)), decode_(source.Format()) {
    source_.Describe(objects_);
    context_.setReduceObjs(&objects_);
    for (const SCorrectionFiles& files : options_.corrections) LoadCorrection(files);
    if (options_.clip) {
        const auto settings = objects_.GetCorrectionCfg(true);
        settings->clip = options_.clip->on;
        settings->minimum = options_.clip->low;
        settings->maximum = options_.clip->high;
    }
    const u32 pixels = source_.Format().PixelCount();
    values_.resize(pixels);
    status_.resize(pixels);
}

void CMeasurement::LoadCorrection(const SCorrectionFiles& files) {
    const SFrameFormat& format = source_.Format();
    if (decode_.Form().unit != Counts) throw UsageFault("--correction: the source holds colours, not counts");
    const u8 present = TablesOnDisk(files.stem);
    if (!present)
        throw CFault(
            {.exit = ExitFile, .file = files.stem, .problem = "there is no .mvg, .mvo or .mvb file of that stem"});
    const auto tables = objects_.Get<reduce::CCorrectionReduceObject>(files.preset ? *files.preset : -1, true);
    // The library passes over a file that it cannot read. Here, one that is there is meant.
    const bool loaded = tables->Load(FileSystem, CString(files.stem.c_str()));
    if (!loaded || (tables->present & present) != present)
        throw CFault({.file = files.stem,
                      .expected = "correction tables of one size, each of the kind of its extension",
                      .found = "a damaged file, another kind or another size"});
    if (tables->width != format.width || tables->height != format.height)
        throw CFault({.file = files.stem,
                      .expected = fmt::format("tables of {} x {}", format.width, format.height),
                      .found = fmt::format("{} x {}", tables->width, tables->height)});
    corrected_.resize(format.PixelCount());
}

SMeasuredFrame CMeasurement::Measure(u64 number) {
    try {
        DecodeFrame(number);
        OverrideScene();
    } catch (const CFault& fault) {
        throw fault.Of(source_.Name(), number);
    }
    if (!unitChosen_) unit_ = ChooseOfferedUnit();
    unitChosen_ = true;
    try {
        UpdateContext();
        ConvertPixels();
    } catch (const CFault& fault) {
        throw fault.Of(source_.Name(), number);
    }
    return {number, values_, status_};
}

void CMeasurement::DecodeFrame(u64 number) {
    source_.Read(number, frame_);
    const CFrameClock clock;
    preset_ = decode_.Decode(frame_, objects_);
    const auto info = objects_.GetFrameInfo(preset_, false);
    time_ = info ? clock.Carried(info->time) : std::nullopt;
}

EUnit CMeasurement::ChooseOfferedUnit() const {
    TArray<EUnit> offered;
    context_.GetUnits(offered);
    try {
        return ChooseUnit(offered, options_);
    } catch (const CFault& fault) {
        SFault facts = fault.Facts();
        facts.file = source_.Name();
        throw CFault(std::move(facts));
    }
}

void CMeasurement::OverrideScene() {
    if (options_.scene == SSceneValues{}) return;
    const auto present = objects_.GetObjectParameters(true);
    reduce::CObjectParametersReduceObject wanted;
    reduce::CObjectParametersReduceObject unused;
    present->CopyTo(&wanted);
    const auto replace = [](float& value, std::optional<float> by) { value = by.value_or(value); };
    replace(wanted.emissivity, options_.scene.emissivity);
    replace(wanted.distance, options_.scene.distance);
    replace(wanted.reflectedTemp, options_.scene.reflectedTemp);
    replace(wanted.atmosphereTemp, options_.scene.atmosphereTemp);
    replace(wanted.atmosphereTrans, options_.scene.atmosphereTrans);
    replace(wanted.relativeHumidity, options_.scene.relativeHumidity);
    replace(wanted.extOpticsTemp, options_.scene.extOpticsTemp);
    replace(wanted.extOpticsTrans, options_.scene.extOpticsTrans);
    reduce::CConvertContext::OverrideObjectParameters(objects_, wanted, unused);
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
    if (ready_ && preset_ == readyPreset_ && CalibrationMark() == mark_) return;
    ready_ = false;
    if (!context_.SetUnit(unit_, options_.scale))
        throw CFault({.problem = "the frame carries no calibration for " + UnitWords(unit_)});
    std::array<bool, reduce::CConvertContext::PresetCount> presets{};
    if (preset_ >= presets.size())
        throw CFault({.expected = "a preset from 0 to 7", .found = fmt::format("{}", preset_)});
    presets[preset_] = true;
    if (!context_.Update(presets.data(), static_cast<u8>(presets.size()), 0))
        throw CFault({.problem = "the frame's calibration is not usable"});
    // The converter has written the transmission that it used to the objects, so the mark is that of after.
    mark_ = CalibrationMark();
    readyPreset_ = preset_;
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

Json CMeasurement::Parameters() {
    Json parameters = {
        {"source", source_.Name()}, {"pixelType", source_.Format().pixelTypeName}, {"unit", UnitWords(unit_)}};
    for (const SCorrectionFiles& files : options_.corrections) parameters["correction"].push_back(files.stem);
    const auto scene = objects_.GetObjectParameters(false);
    if (scene && context_.canChangeObjectParameters()) parameters.update(SceneJson(*scene));
    return parameters;
}

}  // namespace ovix::app
