#pragma once

#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/header_line_filter.h"

/// What a family with a header line hands over to the factory.
namespace ovix::reduce {

/// Registers a family and its frame type; the header type is handled, and bears no name in the registry.
bool RegisterHeaderLineFilter(const wchar_t* name, const SHeaderLine& line, CFilterFactory::Create_t create,
                              CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers);

/// The check of a family: `bytesRead` bytes, and of frames with pixels the line and the image.
bool CheckHeaderLine(const CFrameProbe& probe, const SHeaderLine& line, GUID type, u16 width, u16 height);
bool GetHeaderLineForm(const SHeaderLine& line, GUID type, SFrameForm& form);

/// The answers of a family, which differ in the description alone. A header names no size, and has no mark and no year.
template <const SHeaderLine& kLine>
constexpr SFrameAnswers HeaderLineAnswers(decltype(SFrameAnswers::describe) describe) {
    return {.check =
                [](const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
                    return CheckHeaderLine(CFrameProbe(frame, frameSize, fault), kLine, type, width, height);
                },
            .form = [](GUID type, SFrameForm& form) { return GetHeaderLineForm(kLine, type, form); },
            .evidence =
                [](const void*, GUID, u16, u16, u32, SFrameEvidence& evidence) {
                    evidence.time = EFrameTime::WithoutYear;
                    evidence.frameCounter = evidence.preset = true;
                },
            .describe = describe};
}

}  // namespace ovix::reduce
