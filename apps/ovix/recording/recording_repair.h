#pragma once

#include <functional>

#include "apps/ovix/output/output_file.h"
#include "apps/ovix/recording/recording_file.h"

namespace ovix::app {

/// What became of a recording that was brought back.
struct SRepaired {
    u64 frames = 0;   ///< in the new file
    u64 leftOut = 0;  ///< frames and blocks that would not do
};

/// Writes a whole recording from what is whole in another: the data of its blocks byte for byte, the objects of classes
/// that nobody knows included, under headers that hold what follows from the data; every whole frame that its decoder
/// takes, bit for bit; and the source info with their number. A source info that is damaged otherwise than by an end in
/// the middle of its patch is made anew.
///
/// `say` is called with a line for everything that is left out or made anew. Throws `CFault` when there are no pixels
/// or not one frame to be had.
SRepaired RepairRecording(CRecordingFile& file, COutputFile& output, const std::function<void(std::string)>& say);

}  // namespace ovix::app
