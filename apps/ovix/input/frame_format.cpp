#include "apps/ovix/input/frame_format.h"

#include "apps/ovix/fault.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

std::optional<GUID> TypeOfHeader(const std::string& filter, const GUID& type) {
    const auto& entry = reduce::filterFactory()->GetEntry(CString(filter.c_str()));
    const TSharedPtr<reduce::IFilter> decoder = reduce::filterFactory()->Create(entry.name);
    for (const GUID& whole : entry.extra.pixelTypes) {
        GUID header;
        u32 size = 0;
        if (decoder && decoder->GetHeaderInfo(whole, 1, 1, 0, header, size) && header == type) return whole;
    }
    return {};
}

SPixelForm PixelFormOf(const SFrameFormat& format) {
    const TSharedPtr<reduce::IFilter> filter = reduce::filterFactory()->Create(CString(format.filter.c_str()));
    if (!filter) throw UsageFault("no decoder has the name \"" + format.filter + "\"");
    if (filter->HasPixels(format.pixelType)) return {};
    if (TypeOfHeader(format.filter, format.pixelType)) return {.pixels = false};
    // Neither the registered element type nor the byte width tells video from counts (several rows of video bear
    // `UInt16`); what the type stands under does.
    if (IsPixelBaseType(format.pixelType, rootScreenType)) return {.type = Opaque, .unit = RGB24};
    return {.compressed = true};
}

}  // namespace ovix::app
