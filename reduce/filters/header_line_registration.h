#pragma once

#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/header_line_filter.h"

/// What a family with a header line hands over to the factory.
namespace ovix::reduce {

/// Registers a family and its frame type; the header type is handled, and bears no name in the registry.
bool RegisterHeaderLineFilter(const wchar_t* name, const SHeaderLine& line, CFilterFactory::Create_t create,
                              CFilterFactory::Destroy_t destroy, FrameCheck check, FrameDescription describe);

/// The check of a family: `bytesRead` bytes, and of frames with pixels the line and the image.
bool CheckHeaderLine(const CFrameProbe& probe, const SHeaderLine& line, GUID type, u16 width, u16 height);
template <const SHeaderLine& kLine>
bool CheckHeaderLineFrame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    return CheckHeaderLine(CFrameProbe(frame, frameSize, fault), kLine, type, width, height);
}

}  // namespace ovix::reduce
