#include "measure/frame/prepared.h"

#include <algorithm>

#include "measure/error.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

CError NoCalibration(std::string problem) {
    return CError({.id = EError::NoCalibration, .problem = std::move(problem)});
}

/// The library takes a preset without a polynomial for one whose counts are radiances.
void RequireUserPresets(reduce::CReduceObjectArray& objects, const Presets& presets) {
    const auto calibration = objects.Get<reduce::CRCalReduceObject>(-1, false);
    for (std::size_t preset = 0; preset < presets.size(); ++preset) {
        int order = 0;
        if (presets[preset] && !(calibration && calibration->cal.GetPolyOrder(static_cast<int>(preset), order)))
            throw NoCalibration(Say("the user calibration says nothing of preset ", preset));
    }
}

}  // namespace

CPrepared::CPrepared(const reduce::CReduceObjectArray& objects, EUnit unit, ETempType scale, const Presets& presets,
                     std::vector<u8> key)
    : key_(std::move(key)) {
    CopyObjects(objects, objects_);
    context_.setReduceObjs(&objects_);
    if (!context_.SetUnit(unit, scale)) throw NoCalibration("the frame carries no calibration for " + UnitWords(unit));
    if (IsUserUnit(unit)) RequireUserPresets(objects_, presets);
    Presets enabled = presets;
    if (!context_.Update(enabled.data(), static_cast<u8>(enabled.size()), 0))
        throw NoCalibration("the frame's calibration is not usable");
    scene_ = objects_.GetObjectParameters(false);
    usesScene_ = context_.canChangeObjectParameters() || IsUserUnit(unit);
    FillTables(presets);
}

/// Converters fill their tables when the first pixel comes: that is one of no frame.
void CPrepared::FillTables(const Presets& presets) const {
    u16 count = 0;
    float value = 0;
    u8 status = 0;
    context_.Convert(STypedData{&count, UInt16}, STypedData{&value, Flt32}, &status, 1);
    if (std::ranges::count(presets, true) < 2) return;
    for (u8 preset = 0; preset < u8{reduce::CConvertContext::PresetCount}; ++preset) {
        if (presets[preset])
            context_.Convert(STypedData{&count, UInt16}, &preset, STypedData{&value, Flt32}, &status, 1);
    }
}

bool CPrepared::Correct(STypedData& pixels, STypedData room, u32 count) const {
    return !context_.needToApplyNUC() || context_.ApplyNUC(pixels, room, count, pixels);
}

bool CPrepared::Convert(STypedData pixels, STypedData out, u8* status, u32 count) const {
    return context_.Convert(pixels, out, status, count);
}

bool CPrepared::Merge(const STypedData* frames, STypedData merged, u8* presetMap, u32 count) const {
    return context_.Abate(frames, count, merged, presetMap);
}

bool CPrepared::Convert(STypedData merged, const u8* presetMap, STypedData out, u8* status, u32 count) const {
    return context_.Convert(merged, presetMap, out, status, count);
}

std::shared_ptr<const CPrepared> CPreparedCache::Find(const std::vector<u8>& key) const {
    return entries_.With([&](Entries& entries) -> std::shared_ptr<const CPrepared> {
        const auto entry = std::ranges::find(entries, key, [](const auto& e) -> const auto& { return e->Key(); });
        if (entry == entries.end()) return nullptr;
        std::rotate(entries.begin(), entry, entry + 1);
        return entries.front();
    });
}

std::shared_ptr<const CPrepared> CPreparedCache::Keep(std::shared_ptr<const CPrepared> made) const {
    std::shared_ptr<const CPrepared> dropped;  // goes after the lock is free
    entries_.With([&](Entries& entries) {
        for (const auto& entry : entries) {
            if (entry->Key() != made->Key()) continue;
            dropped = std::exchange(made, entry);
            return;
        }
        if (entries.size() == kMost) {
            dropped = std::move(entries.back());
            entries.pop_back();
        }
        entries.insert(entries.begin(), made);
    });
    return made;
}

}  // namespace ovix::measure
