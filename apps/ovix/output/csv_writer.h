#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// A table for spreadsheets and scripts, one line for each row of each frame: the number of the frame, the row, then
/// the pixels from left to right. The head names them with their unit: `frame,row,x0 [°C],x1 [°C]`. Numbers are the
/// shortest texts that read back to the same value.
std::unique_ptr<IFrameWriter> MakeCsvWriter(const std::filesystem::path& target, const SSeries& series, bool overwrite);

}  // namespace ovix::app
