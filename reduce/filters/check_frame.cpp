#include "reduce/filters/check_frame.h"

#include "reduce/filters/filter_factory.h"

namespace ovix::reduce {

bool CheckFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                SFrameFault* fault) {
    const CFilterFactory::SEntry& entry = filterFactory()->GetEntry(filter);
    if (entry.create && entry.extra.check) return entry.extra.check(frame, type, width, height, frameSize, fault);
    if (fault) *fault = {0, L"a decoder that checks its frames", filter};
    return false;
}

}  // namespace ovix::reduce
