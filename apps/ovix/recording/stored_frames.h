#pragma once

#include <vector>

#include "apps/ovix/recording/frame_counts.h"
#include "apps/ovix/recording/recording_file.h"

namespace ovix::app {

/// The whole frames of a recording, whatever state it is in, each held against the decoder's check and counted. Where
/// no decoder takes the pixel type, all frames pass and count as of preset 0.
class CStoredFrames {
  public:
    /// Borrows a file that has pixels.
    CStoredFrames(const CRecordingFile& file, bool fixedPreset);

    bool HasDecoder() const { return static_cast<bool>(filter_); }
    u64 Count() const { return file_.WholeFrames(); }
    /// The bytes of a frame up to the next one, which hold until the next is read. Throws `CFault`, its offset within
    /// the frame, for one that would not do; that is not counted.
    std::span<const u8> Read(u64 frame);
    const CFrameCounts& Counts() const { return counts_; }

  private:
    void Check(std::span<const u8> pixels) const;

    const CRecordingFile& file_;
    SFrameFormat format_;
    TSharedPtr<reduce::IFilter> filter_;
    CFrameCounts counts_;
    std::vector<u8> bytes_;
    std::vector<u8> scratch_;
};

}  // namespace ovix::app
