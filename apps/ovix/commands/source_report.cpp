#include "apps/ovix/commands/source_report.h"

#include "apps/ovix/fault.h"
#include "apps/ovix/input/pixel_type_names.h"
#include "apps/ovix/pipeline/calibration_json.h"
#include "apps/ovix/pipeline/frame_time.h"
#include "apps/ovix/pipeline/scene_json.h"
#include "apps/ovix/pipeline/unit_choice.h"
#include "apps/ovix/user_calibration.h"
#include "reduce/reduce.h"

namespace ovix::app {

CSourceReport::CSourceReport(IFrameSource& source, const std::optional<CRCalFile>& userCalibration)
    : source_(source), decode_(source.Format()) {
    source_.Describe(objects_);
    if (userCalibration) PutUserCalibration(*userCalibration, objects_);
    const GUID type = source_.Format().pixelType;
    counts_ = decode_.Filter().HasFrameCounter(type);
    counterSpan_ = decode_.Filter().FrameCounterMaxValue(type) + 1;
}

CSourceReport::SBasics CSourceReport::ParseWhole() {
    const CFrameClock clock;
    SBasics basics;
    basics.preset = decode_.DecodeMetadata(frame_, objects_);
    source_.Overrule(objects_);
    const auto info = objects_.GetFrameInfo(basics.preset, false);
    if (!info) return basics;
    basics.time = clock.Carried(info->time);
    if (counts_) basics.counter = info->frameNumber;
    return basics;
}

CSourceReport::SBasics CSourceReport::ParseBasics() {
    decode_.Check(frame_);
    const CFrameClock clock;
    const SFrameFormat& format = source_.Format();
    SBasics basics;
    u64 counter = 0;
    CDateTime time;
    if (!decode_.Filter().ParseBasicInfo(frame_.data(), format.pixelType, format.width, format.height,
                                         static_cast<u32>(frame_.size()), basics.preset, counter, time))
        throw CFault({.problem = "the decoder does not take the frame"});
    basics.time = clock.Carried(time);
    if (counts_) basics.counter = counter;
    return basics;
}

void CSourceReport::Add(u64 frame) {
    SBasics basics;
    try {
        source_.Read(frame, frame_);
        if (!frames_) {
            const std::vector<u8> untouched = frame_;
            basics = ParseWhole();
            // Some formats are read less carefully by the quick look: a record in the other byte order, for example.
            frame_ = untouched;
            scans_ = ParseBasics() == basics;
        } else {
            basics = scans_ ? ParseBasics() : ParseWhole();
        }
    } catch (const CFault& fault) {
        throw fault.Of(source_.Name(), frame);
    }
    preset_ = basics.preset;
    if (basics.time) {
        if (!times_) times_ = {*basics.time, *basics.time};
        times_->last = *basics.time;
    }
    if (counts_) AddCounter(frame, basics.counter);
    ++framesOfPreset_[preset_];
    ++frames_;
    lastFrame_ = frame;
}

void CSourceReport::AddCounter(u64 frame, u64 counter) {
    if (!frames_) {
        firstCounter_ = counter;
    } else if (frame == lastFrame_ + 1) {
        u64 step = counter - lastCounter_;
        if (counterSpan_) step %= counterSpan_;
        if (step != 1) {
            const SGap gap{lastFrame_, lastCounter_, counter, step ? step - 1 : 0};
            ++gapCount_;
            missing_ += gap.missing;
            if (gaps_.size() < kMostGaps) gaps_.push_back(gap);
        }
    }
    lastCounter_ = counter;
}

Json CSourceReport::TimeJson() const {
    if (!times_) return nullptr;
    const i64 ticks = times_->last.GetTimestamp() - times_->first.GetTimestamp();
    return {{"first", TimeText(times_->first)},
            {"last", TimeText(times_->last)},
            {"spanSeconds", static_cast<double>(ticks) / static_cast<double>(CDateTime::TicksPerSecond)}};
}

Json CSourceReport::CounterJson() const {
    if (!counts_ || !frames_) return nullptr;
    Json gaps = Json::array();
    for (const SGap& gap : gaps_) {
        gaps.push_back({{"afterFrame", gap.afterFrame}, {"from", gap.from}, {"to", gap.to}, {"missing", gap.missing}});
    }
    return {{"first", firstCounter_},
            {"last", lastCounter_},
            {"gapCount", gapCount_},
            {"missing", missing_},
            {"gaps", std::move(gaps)}};
}

Json CSourceReport::PresetsJson() const {
    Json presets = Json::array();
    for (std::size_t i = 0; i < framesOfPreset_.size(); ++i) {
        if (framesOfPreset_[i]) presets.push_back({{"preset", i}, {"frames", framesOfPreset_[i]}});
    }
    return presets;
}

/// All objects by which counts are turned into something else.
Json CSourceReport::CalibrationsJson() const {
    Json list = Json::array();
    for (u32 i = 0; i < objects_.GetSize(); ++i) {
        const auto object = objects_.GetAt(i);
        const CString name(object->GetName());
        if (!name.EndsWithNoCase(L"Cal") && !name.Equals(L"Correction")) continue;
        list.push_back({{"name", name.GetUTF8()},
                        {"preset", object->IsPerPreset() ? Json(object->preset) : Json()},
                        {"valid", object->valid}});
    }
    return list;
}

Json CSourceReport::UserCalJson() {
    const auto object = objects_.Get<reduce::CRCalReduceObject>(-1, false);
    return object && object->valid ? UserCalibrationJson(objects_, preset_) : Json();
}

Json CSourceReport::Document() {
    const SFrameFormat& format = source_.Format();
    Json document = {{"file", source_.Name()},
                     {"decoder", format.filter},
                     {"pixelType", format.pixelTypeName},
                     {"pixelTypeGuid", GuidText(format.pixelType)},
                     {"width", format.width},
                     {"height", format.height},
                     {"frames", source_.Count()},
                     {"framesRead", frames_}};
    document["frameBytes"] = source_.FrameSize() ? Json(source_.FrameSize()) : Json();
    document["time"] = TimeJson();
    document["counter"] = CounterJson();
    document["presets"] = PresetsJson();
    document["baseUnit"] = UnitWords(decode_.Form().unit);
    TArray<EUnit> units;
    reduce::converterFactory()->GetSupportedUnits(units, objects_);
    document["units"] = Json::array();
    for (const EUnit unit : units) document["units"].push_back(UnitWords(unit));
    const auto scene = objects_.GetObjectParameters(false);
    document["scene"] = scene && scene->fromSource ? SceneJson(*scene) : Json();
    document["calibrations"] = CalibrationsJson();
    document["calibration"] = FactoryCalibrationJson(objects_, preset_);
    document["userCalibration"] = UserCalJson();
    return document;
}

Json CSourceReport::FrameValues() {
    Json values = Json::array();
    const auto info = objects_.GetFrameInfo(preset_, false);
    for (u32 i = 0; info && i < info->NumEntries(); ++i) {
        const auto entry = info->GetAt(i);
        values.push_back({{"name", entry.name.GetUTF8()},
                          {"value", entry.value.GetUTF8()},
                          {"unit", entry.unit.GetUTF8()},
                          {"type", entry.type.GetUTF8()}});
    }
    return values;
}

}  // namespace ovix::app
