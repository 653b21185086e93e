#pragma once

#include <filesystem>
#include <span>

#include "apps/ovix/demo_report.h"
#include "apps/ovix/input/frame_format.h"

namespace ovix::app {

/// Temperatures with their status, in the scale that was asked for.
struct SReadBack {
    std::vector<float> values;
    std::vector<u8> status;
};

/// Records one raw frame with all the metadata of the demo's frame to a file, and measures it from that file alone.
/// Throws `CAppError` when it cannot be written or read.
SReadBack RecordAndMeasure(const std::filesystem::path& path, const SFrameFormat& format, SDemoFrame& frame,
                           const SDemoOptions& options);

}  // namespace ovix::app
