#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// NPY 1.0: little-endian 32-bit floats of shape (height, width), or (frames, height, width) when several frames are
/// asked for. A JSON file beside it (`out.json`) holds what `DescribeSeries` says and, under "frames", a
/// `DescribeFrame` for each.
std::unique_ptr<IFrameWriter> MakeNpyWriter(const std::filesystem::path& target, const SSeries& series, bool overwrite);

}  // namespace ovix::app
