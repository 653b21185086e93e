#include "reduce/filters/filter.h"

#include <algorithm>
#include <cstring>

namespace ovix::reduce {

IFilter::~IFilter() = default;

bool IFilter::ParseFrame(void*, GUID, u16, u16, u32, STypedData, CReduceObjectArray&, u8& preset) {
    preset = 0;
    return false;
}

bool IFilter::ParseReduceObjects(void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                                 CReduceObjectArray& objects, u8& preset) {
    return ParseFrame(frame, type, width, height, frameSize, {nullptr, NoPixels}, objects, preset);
}

bool IFilter::ParsePreset(void*, GUID, u16, u16, u32, u8& preset) {
    preset = 0;
    return false;
}

bool IFilter::ParseFrameCounter(void*, GUID, u16, u16, u32, u64& counter) {
    counter = 0;
    return false;
}

bool IFilter::StoreFrame(const void* source, u32 sourceSize, GUID, u16, u16, u16, u16, void* dest, u32 destSize) {
    if (const u32 n = std::min(sourceSize, destSize)) std::memcpy(dest, source, n);
    return true;
}

bool IFilter::CheckForTrigger(const void*, u32, GUID, u16, u16, u16, u8, bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    return true;
}

bool IFilter::HasTime(GUID) const { return false; }
bool IFilter::HasFrameCounter(GUID) const { return false; }
u64 IFilter::FrameCounterMaxValue(GUID) const { return 65535; }

bool IFilter::GetTriggerFields(GUID, TArray<CString>& names) const {
    names.Empty();
    return false;
}

bool IFilter::CountPresets(void* frame, u32 frameSize, GUID type, u16 width, u16 height, u16 frameIndex, u32* counts) {
    u8 preset = 0;
    if (frameIndex != 0 || !ParsePreset(frame, type, width, height, frameSize, preset)) return false;
    ++counts[preset];
    return true;
}

bool IFilter::HasHeader(GUID) const { return false; }

bool IFilter::GetHeaderInfo(GUID, u16, u16, u32, GUID& headerType, u32& headerSize) const {
    headerType = CGUID::Empty;
    headerSize = 0;
    return false;
}

bool IFilter::ExtractHeader(void*, GUID, u16, u16, u32, void*, u32) { return false; }

bool IFilter::GetConfigSize(GUID, u32& size) const {
    size = 0;
    return false;
}
bool IFilter::GetConfig(GUID, void*, u32) const { return false; }
bool IFilter::SetConfig(GUID, const void*, u32) { return false; }

}  // namespace ovix::reduce
