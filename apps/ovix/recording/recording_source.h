#pragma once

#include <vector>

#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/recording/recording_file.h"

namespace ovix::app {

/// The whole frames of a recording. What its blocks say of the source is loaded once; of the frames, one at a time is
/// read.
class CRecordingSource final : public IFrameSource {
  public:
    /// Throws `CFault` for a recording whose blocks cannot be followed to its frames, that has none, that no decoder
    /// takes, or that says two things of its geometry. CRCs are not looked at.
    explicit CRecordingSource(CRecordingFile file);

    const std::string& Name() const override { return file_.Name(); }
    const SFrameFormat& Format() const override { return format_; }
    /// Without a last frame that is cut.
    u64 Count() const override { return file_.WholeFrames(); }
    u64 FrameSize() const override { return file_.Pixels().frameSize; }
    void Read(u64 index, std::vector<u8>& frame) override;
    void Describe(reduce::CReduceObjectArray& objects) const override;
    /// Scene values that the recording tells otherwise than its first frames were given to it when it was made, and
    /// hold for all frames.
    void Overrule(reduce::CReduceObjectArray& objects) const override;

    const CRecordingFile& File() const { return file_; }

  private:
    using SceneValue = float reduce::CObjectParametersReduceObject::*;

    void RequireGeometry();
    void FindOverruled();

    CRecordingFile file_;
    SFrameFormat format_;
    mutable reduce::CReduceObjectArray objects_;
    std::vector<SceneValue> overruled_;
};

}  // namespace ovix::app
