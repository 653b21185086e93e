#include "reduce/filters/lor_filter.h"

#include "core/numbers.h"

namespace ovix::reduce {

namespace {

struct STriggerField {
    const wchar_t* name;
    bool (*fired)(const u8* header);
};
constexpr STriggerField kTriggerFields[] = {{L"Trigger", lor::Trigger}, {L"RecordStart", lor::RecordStart}};

}  // namespace

u64 CLORFilter::FrameCounterMaxValue(GUID) const { return CUInt32::Max; }
u8 CLORFilter::PresetOf(const u8* header) const { return static_cast<u8>(lor::Preset(header)); }
u64 CLORFilter::CounterOf(const u8* header) const { return LoadLittle<u32>(header + lor::kFrameCounter); }
/// The header has no year: that of `time` stays.
void CLORFilter::SetTime(CDateTime& time, const u8* header, u16) const { lor::Clock(header).Set(time); }

bool CLORFilter::CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16, u16, u16, u8 field,
                                 bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    if (field >= triggerFields_ || !Line().Takes(type) || sourceSize < lor::kHeaderSize) return false;
    triggered = kTriggerFields[field].fired(static_cast<const u8*>(source));
    return true;
}

bool CLORFilter::GetTriggerFields(GUID, TArray<CString>& names) const {
    names.Empty();
    for (u8 i = 0; i < triggerFields_; ++i) names.Add(kTriggerFields[i].name);
    return true;
}

TSharedPtr<CFrameInfoReduceObject> CLORFilter::FillFrameInfo(const u8* header, lor::EModel model,
                                                             CReduceObjectArray& objects, u8 preset) const {
    TSharedPtr<CFrameInfoReduceObject> info = objects.Get<CFrameInfoReduceObject>(preset, true);
    if (!info) return info;
    frame_values::StartFrame(*info, preset, CounterOf(header));
    lor::Clock(header).Set(info->time);
    lor::AddValues(info->extra, model, header);
    return info;
}

}  // namespace ovix::reduce
