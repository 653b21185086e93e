#include "reduce/filters/describe_frame.h"

#include "reduce/filters/filter_factory.h"

namespace ovix::reduce {

bool DescribeFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                   TArray<SFrameField>& fields) {
    fields.Empty();
    const CFilterFactory::SEntry& entry = filterFactory()->GetEntry(filter);
    if (!entry.create || !entry.extra.describe) return false;
    if (!CheckFrame(filter, frame, type, width, height, frameSize)) return false;
    entry.extra.describe(frame, type, width, height, frameSize, fields);
    return true;
}

}  // namespace ovix::reduce
