#include "reduce/filters/header_line_filter.h"

#include <algorithm>
#include <cstring>

#include "core/pixel_types.h"
#include "reduce/filters/frame_images.h"

namespace ovix::reduce {

namespace {

u64 LineSize(u16 width) { return ImageSize(width, 1); }

}  // namespace

bool SHeaderLine::Takes(const GUID& type) const {
    return type == frameType || type == headerType || type == rootIRType;
}

CHeaderLineFilter::~CHeaderLineFilter() = default;

bool CHeaderLineFilter::HasPixels(GUID type) const { return type == line_.frameType || type == rootIRType; }

bool CHeaderLineFilter::GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) {
    if (!HasPixels(type)) return false;
    *pixels = static_cast<u8*>(frame) + LineSize(width);
    stride = 2 * width;
    return true;
}

bool CHeaderLineFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                                   CReduceObjectArray& objects, u8& preset) {
    const u8* header = static_cast<const u8*>(frame);
    if (!line_.Takes(type) || !FillObjects(header, type, width, objects, preset)) return false;
    // Behind a header that was kept apart there may be nothing, so this once the size is asked.
    const bool hasImage = HasPixels(type) || LineSize(width) + ImageSize(width, height) <= frameSize;
    if (dest.data && hasImage) CopyPixels(dest.data, header + LineSize(width), ImageSize(width, height) / 2);
    return true;
}

bool CHeaderLineFilter::ParsePreset(void* frame, GUID type, u16, u16, u32, u8& preset) {
    if (!line_.Takes(type)) return false;
    preset = PresetOf(static_cast<const u8*>(frame));
    return true;
}

bool CHeaderLineFilter::ParseTime(void* frame, GUID type, u16 width, u16, u32, CDateTime& time) {
    if (!line_.Takes(type)) return false;
    SetTime(time, static_cast<const u8*>(frame), width);
    return true;
}

bool CHeaderLineFilter::ParseFrameCounter(void* frame, GUID type, u16, u16, u32, u64& counter) {
    if (!line_.Takes(type)) return false;
    counter = CounterOf(static_cast<const u8*>(frame));
    return true;
}

bool CHeaderLineFilter::ParseBasicInfo(void* frame, GUID type, u16 width, u16, u32, u8& preset, u64& counter,
                                       CDateTime& time) {
    if (!line_.Takes(type)) return false;
    const u8* header = static_cast<const u8*>(frame);
    preset = PresetOf(header);
    counter = CounterOf(header);
    SetTime(time, header, width);
    return true;
}

bool CHeaderLineFilter::HasTime(GUID) const { return true; }
bool CHeaderLineFilter::HasFrameCounter(GUID) const { return true; }
bool CHeaderLineFilter::HasHeader(GUID type) const { return type == line_.frameType; }

bool CHeaderLineFilter::GetHeaderInfo(GUID type, u16 width, u16 height, u32 frameSize, GUID& headerType,
                                      u32& headerSize) const {
    if (!HasHeader(type)) return IFilter::GetHeaderInfo(type, width, height, frameSize, headerType, headerSize);
    headerType = line_.headerType;
    headerSize = 2u * std::min(width, line_.words);
    return true;
}

bool CHeaderLineFilter::ExtractHeader(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void* dest,
                                      u32 destSize) {
    GUID headerType;
    u32 headerSize = 0;
    if (!GetHeaderInfo(type, width, height, frameSize, headerType, headerSize)) return false;
    const u32 copied = std::min(headerSize, destSize);
    if (copied) std::memcpy(dest, frame, copied);
    if (destSize > copied) std::memset(static_cast<u8*>(dest) + copied, 0, destSize - copied);
    return true;
}

}  // namespace ovix::reduce
