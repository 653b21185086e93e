#include "apps/ovix/input/raw_dump_source.h"

#include <fmt/format.h>

#include "apps/ovix/fault.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

CRawDumpSource::CRawDumpSource(std::shared_ptr<const CInputFile> file, SFrameFormat format, u32 frameSize)
    : file_(std::move(file)), format_(std::move(format)), layout_(FindLayout(*file_, format_, frameSize)) {}

void CRawDumpSource::Read(u64 index, std::vector<u8>& frame) {
    const SExtent extent = layout_->Of(index);
    if (extent.size > CUInt32::Max)
        throw CFault({.file = Name(), .frame = index, .problem = "has more bytes than a frame can have"});
    frame.resize(static_cast<std::size_t>(extent.size));
    const std::size_t read = file_->ReadAt(extent.offset, frame);
    const u64 expected = layout_->FrameSize() ? layout_->FrameSize() : extent.size;
    if (read < expected)
        throw CFault({.file = Name(),
                      .frame = index,
                      .offset = read,
                      .problem = "the frame is cut",
                      .expected = fmt::format("{} bytes", expected),
                      .found = fmt::format("the end of the file after {}", read)});
}

void CRawDumpSource::Describe(reduce::CReduceObjectArray& objects) const {
    objects.Reset();
    const auto info = objects.GetSourceInfo(true);
    info->pixelType = format_.pixelType;
    info->width = info->frameWidth = info->packetWidth = format_.width;
    info->height = info->frameHeight = info->packetHeight = format_.height;
    info->baseUnit = PixelFormOf(format_).unit;
}

}  // namespace ovix::app
