#pragma once

#include <span>
#include <vector>

#include "apps/ovix/cli/frame_selection.h"
#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "apps/ovix/recording/frame_counts.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// Writes a recording frame by frame. What it says is done stands in the file; whatever fails is thrown as `CFault`,
/// and the file is then one that `ovix verify` refuses.
class CRecordingWriter {
  public:
    /// Starts the recording with the metadata of the array, which needs a source info. All frames take `frameSize`
    /// bytes: a shorter one is filled up with zeros, which decoders pass over. `unpacked` is that of the library.
    CRecordingWriter(TSharedPtr<IFile> file, reduce::CReduceObjectArray& objects, const SFrameFormat& format,
                     u32 frameSize, bool unpacked);

    /// Appends a frame as the camera delivered it. One that the decoder does not store or would not take again is a
    /// fault, and nothing of it is written.
    void Add(std::span<const u8> frame);
    /// Puts the frame counts into the metadata, and looks whether they arrived there.
    void Finish();

  private:
    using SourceInfo = reduce::CSourceInfoReduceObject;

    void PatchCounts();
    void RequireFinished();

    TSharedPtr<IFile> file_;
    SFrameFormat format_;
    CGuardedDecode decode_;
    bool unpacked_;
    CFrameCounts counts_;
    std::vector<u8> stored_;
};

/// Fills the array with what a recording of these frames says before its first frame: what the source says, and the
/// metadata of the first frames, where the earlier ones prevail. Frames that would not do are passed over.
void GatherMetadata(IFrameSource& source, const CFrameNumbers& frames, reduce::CReduceObjectArray& objects);

/// The source info's packet: the lines of an image that a stored frame takes, where those are whole.
void SetPacket(reduce::CSourceInfoReduceObject& info, u32 frameSize);

}  // namespace ovix::app
