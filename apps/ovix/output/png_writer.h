#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// A picture for the eye, one PNG for each frame: palette, colour bar with the unit, title and caption, the marked
/// regions, and a legend for under, over and no data where they occur.
std::unique_ptr<IFrameWriter> MakePngWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options);

}  // namespace ovix::app
