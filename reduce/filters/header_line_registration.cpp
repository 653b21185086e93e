#include "reduce/filters/header_line_registration.h"

#include "core/pixel_types.h"

namespace ovix::reduce {

bool RegisterHeaderLineFilter(const wchar_t* name, const SHeaderLine& line, CFilterFactory::Create_t create,
                              CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers) {
    const bool done = filterFactory()->Register(name, {line.frameType, line.headerType}, create, destroy, answers);
    RegisterPixelType(line.frameType, line.frameName, 2, UInt16, rootIRType);
    return done;
}

bool CheckHeaderLine(const CFrameProbe& probe, const SHeaderLine& line, GUID type, u16 width, u16 height) {
    if (!line.Takes(type)) return probe.Refuse(0, L"a pixel type of the family", L"another pixel type");
    if (!probe.Holds(0, line.bytesRead, L"the header")) return false;
    if (type == line.headerType) return true;
    const u64 lineSize = u64{2} * width;
    return probe.Holds(lineSize, lineSize * height, L"pixels of 2 bytes behind the header line");
}

bool GetHeaderLineForm(const SHeaderLine& line, GUID type, SFrameForm& form) {
    if (!line.Takes(type)) return false;
    form = type == line.headerType ? SFrameForm::OfHeader(line.frameType) : SFrameForm::OfCounts(type);
    return true;
}

}  // namespace ovix::reduce
