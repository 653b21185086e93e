#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// TIFF with a page of 32-bit floats for each frame, compressed by Deflate without a predictor, so that every reader
/// opens it. `ImageDescription` is JSON in ASCII: that of a page says what `DescribeFrame` does, that of the first also
/// what `DescribeSeries` does. BigTIFF when more than 2 GiB of pixels are to come.
std::unique_ptr<IFrameWriter> MakeTiffWriter(const std::filesystem::path& target, const SSeries& series,
                                             bool overwrite);

}  // namespace ovix::app
