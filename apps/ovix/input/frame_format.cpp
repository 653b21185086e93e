#include "apps/ovix/input/frame_format.h"

#include "apps/ovix/fault.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

std::optional<GUID> TypeOfHeader(const std::string& filter, const GUID& type) {
    reduce::SFrameForm form;
    if (!reduce::GetFrameForm(CString(filter.c_str()), type, form) || form.wholeType == type) return {};
    return form.wholeType;
}

SPixelForm PixelFormOf(const SFrameFormat& format) {
    const CString filter(format.filter.c_str());
    if (!reduce::filterFactory()->IsRegistered(filter))
        throw UsageFault("no decoder has the name \"" + format.filter + "\"");
    reduce::SFrameForm form;
    if (!reduce::GetFrameForm(filter, format.pixelType, form))
        throw UsageFault("the decoder \"" + format.filter + "\" does not say what the pixels of \"" +
                         format.pixelTypeName + "\" are");
    if (!form.HasPixels()) return {.pixels = false};
    return {.type = form.element, .unit = form.unit, .compressed = form.compressed};
}

}  // namespace ovix::app
