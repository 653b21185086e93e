#pragma once

#include "measure/recordings/recording_file.h"
#include "measure/sources/frame_layout.h"
#include "measure/sources/source.h"

/// What a recording says before its first frame, as a source of frames takes it.
namespace ovix::measure {

/// The format of its frames. Throws `CError` where the blocks cannot be followed to them, and for a type that no
/// decoder takes.
SFrameFormat FormatOf(const CRecordingFile& file);

/// Fills the array from its blocks and reports what is wrong with them. Throws `CError` (MetadataDamaged) for damage
/// that the options do not accept, and WrongGeometry where pixels do not fit into a frame, or not to the source info.
void LoadMetadata(const CRecordingFile& file, const SFrameFormat& format, const SOpenOptions& options,
                  reduce::CReduceObjectArray& objects, const Report& report);

/// The frames that the source info counts; 0 when the recording was never finished.
u64 CountedFrames(reduce::CReduceObjectArray& objects);
/// Holds that number against the frames that are there.
void CheckTotal(const CRecordingFile& file, reduce::CReduceObjectArray& objects, u64 frames, const Report& report);

}  // namespace ovix::measure
