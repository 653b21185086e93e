#include "apps/ovix/commands/source_report.h"

#include <cmath>
#include <map>

#include "apps/ovix/facts/calibration_json.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

namespace {

/// The fields of a header as they are shown to a reader, with their units, by name; none where it is not described.
std::map<std::string, std::string> ShownFields(std::vector<u8> frame, const measure::SFrameFormat& format) {
    std::map<std::string, std::string> shown;
    TArray<reduce::SFrameField> fields;
    if (format.filter.empty() ||
        !reduce::DescribeFrame(CString(format.filter.c_str()), frame.data(), format.pixelType, format.width,
                               format.height, static_cast<u32>(frame.size()), fields))
        return shown;
    for (const reduce::SFrameField& field : fields) shown.emplace(field.name.GetUTF8(), field.value.GetUTF8());
    return shown;
}

/// A text that is wholly a number, of a type of numbers, as that; others, as hexadecimal masks, as they are.
Json ValueOf(const std::string& text, const std::string& type) {
    if (type == "ascii") return text;
    if (const auto whole = ParseNumber<i64>(text)) return *whole;
    const auto number = ParseNumber<double>(text);
    return number && std::isfinite(*number) ? Json(*number) : Json(text);
}

}  // namespace

CSourceReport::CSourceReport(const measure::CSource& source, const std::optional<CRCalFile>& userCalibration)
    : source_(source), reader_(source), userCalibration_(userCalibration) {
    const measure::SFrameFormat& format = source_.Format();
    const auto filter = reduce::filterFactory()->Create(CString(format.filter.c_str()));
    if (filter) counterSpan_ = filter->FrameCounterMaxValue(format.pixelType) + 1;
}

void CSourceReport::Add(measure::SRawFrame& raw) {
    const measure::SFrameFacts facts = reader_.Read(raw, objects_);
    preset_ = facts.preset;
    carriesTime_ = facts.time.has_value();
    carriesCounter_ = facts.counter.has_value();
    if (facts.time) {
        if (!times_) times_ = {*facts.time, *facts.time};
        times_->last = *facts.time;
    }
    if (facts.counter) AddCounter(raw.number, *facts.counter);
    ++framesOfPreset_[preset_];
    ++frames_;
    lastFrame_ = raw.number;
}

void CSourceReport::AddCounter(u64 frame, u64 counter) {
    if (!counters_) {
        counters_ = {counter, counter};
        return;
    }
    if (frame == lastFrame_ + 1) {
        u64 step = counter - counters_->last;
        if (counterSpan_) step %= counterSpan_;
        if (step != 1) {
            const SGap gap{lastFrame_, counters_->last, counter, step ? step - 1 : 0};
            ++gapCount_;
            missing_ += gap.missing;
            if (gaps_.size() < kMostGaps) gaps_.push_back(gap);
        }
    }
    counters_->last = counter;
}

Json CSourceReport::TimeJson() const {
    if (!times_) return nullptr;
    const auto ticks = (times_->last - times_->first).count();
    return {{"first", TimeText(times_->first)},
            {"last", TimeText(times_->last)},
            {"spanSeconds", static_cast<double>(ticks) / static_cast<double>(CDateTime::TicksPerSecond)}};
}

Json CSourceReport::CounterJson() const {
    if (!counters_) return nullptr;
    Json gaps = Json::array();
    for (const SGap& gap : gaps_) {
        gaps.push_back({{"afterFrame", gap.afterFrame}, {"from", gap.from}, {"to", gap.to}, {"missing", gap.missing}});
    }
    return {{"first", counters_->first},
            {"last", counters_->last},
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
        const bool corrects = object->GetTypeID() == reduce::CCorrectionReduceObject::typeID;
        const bool user = object->GetTypeID() == reduce::CRCalReduceObject::typeID;
        if (!object->IsCalObj() && !corrects && !user) continue;
        list.push_back({{"name", CString(object->GetName()).GetUTF8()},
                        {"preset", object->IsPerPreset() ? Json(object->preset) : Json()},
                        {"valid", object->valid}});
    }
    return list;
}

Json CSourceReport::Document() {
    if (userCalibration_) {
        const auto object = objects_.Get<reduce::CRCalReduceObject>(-1, true);
        object->cal = *userCalibration_;
        object->valid = true;
    }
    const measure::SFrameFormat& format = source_.Format();
    reduce::SFrameForm form = reduce::SFrameForm::OfCounts(format.pixelType);
    if (!format.filter.empty()) reduce::GetFrameForm(CString(format.filter.c_str()), format.pixelType, form);
    Json document = {{"file", source_.Name()},
                     {"decoder", format.filter.empty() ? Json() : Json(format.filter)},
                     {"pixelType", format.pixelTypeName},
                     {"pixelTypeGuid", measure::GuidText(format.pixelType)},
                     {"width", format.width},
                     {"height", format.height},
                     {"frames", source_.Count().value_or(frames_)},
                     {"framesRead", frames_}};
    document["frameBytes"] = source_.FrameSize() ? Json(source_.FrameSize()) : Json();
    document["time"] = TimeJson();
    document["counter"] = CounterJson();
    document["presets"] = PresetsJson();
    document["baseUnit"] = measure::UnitWords(form.HasPixels() ? form.unit : Counts);
    TArray<EUnit> units;
    reduce::converterFactory()->GetSupportedUnits(units, objects_);
    document["units"] = Json::array();
    for (const EUnit unit : units) document["units"].push_back(measure::UnitWords(unit));
    const auto scene = objects_.GetObjectParameters(false);
    document["scene"] = scene && scene->fromSource ? SceneJson(*scene) : Json();
    document["calibrations"] = CalibrationsJson();
    document["calibration"] = CalibrationJson(measure::FactoryCalibration(objects_, preset_));
    const auto user = objects_.Get<reduce::CRCalReduceObject>(-1, false);
    document["userCalibration"] =
        user && user->valid ? CalibrationJson(measure::UserCalibration(objects_, preset_)) : Json();
    document["findings"] = FindingsJson(source_.Findings());
    return document;
}

Json CSourceReport::FrameValues(std::vector<u8> frame) {
    const std::map<std::string, std::string> shown = ShownFields(std::move(frame), source_.Format());
    Json values = Json::array();
    const auto info = objects_.GetFrameInfo(preset_, false);
    for (u32 i = 0; info && i < info->NumEntries(); ++i) {
        const auto entry = info->GetAt(i);
        const std::string name = entry.name.GetUTF8(), text = entry.value.GetUTF8();
        // Decoders store a word for the kind as the unit; the unit itself stands where the header is described.
        const auto field = shown.find(name);
        const bool hasUnit = field != shown.end() && field->second.starts_with(text + ' ');
        Json value = {{"name", name},
                      {"value", ValueOf(text, entry.type.GetUTF8())},
                      {"unit", hasUnit ? field->second.substr(text.size() + 1) : ""},
                      {"kind", entry.unit.GetUTF8()},
                      {"type", entry.type.GetUTF8()}};
        // The fixed rows always hold something; what the frame does not carry is none.
        if ((name == "Time" && !carriesTime_) || (name == "FrameNumber" && !carriesCounter_)) value["value"] = nullptr;
        values.push_back(std::move(value));
    }
    return values;
}

}  // namespace ovix::app
