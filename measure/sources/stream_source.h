#pragma once

#include "measure/recordings/frame_sums.h"
#include "measure/sources/feed.h"
#include "measure/sources/frame_layout.h"
#include "measure/sources/source_body.h"

namespace ovix::measure {

/// Frames that come one after the other, from a pipe or a file that grows. The first one is handed over as soon as it
/// is there, and memory is that of a few frames, however many there are.
///
/// Without a size given, frames of a dump are as large as their family's check asks for, and what stands behind the
/// first one up to the place where the second passes stands behind each. A frame that does not pass is handed over
/// where the next one stands in its place; where it does not, the place is torn and the frames go on at the next that
/// passes.
class CStreamSource final : public CSource::IBody {
  public:
    /// What comes begins with the magic of a recording.
    static std::shared_ptr<CStreamSource> OfRecording(CFeed feed, const SOpenOptions& options);
    static std::shared_ptr<CStreamSource> OfDump(CFeed feed, SFrameFormat format, const SOpenOptions& options);

    CStreamSource(CFeed feed, ESource kind, SFrameFormat format);

    bool IsNumbered() const override { return false; }
    std::optional<u64> Count() const override { return {}; }
    u64 FrameSize() const override { return ownLength_ ? 0 : size_; }
    void Read(u64 number, SRawFrame& frame) const override;
    SExtent Find(u64 number) const override;
    bool Next(SRawFrame& frame, const std::stop_token& stop) override;

  private:
    void LookAtFirstFrame();
    /// Waits for the first frame of a dump and finds its size.
    void FindSize(u32 given);
    /// The size of the frame with which the window begins, once all of it is there; 0 when it begins with none.
    u64 SizeHere();
    void SkipBetweenFrames();
    bool StandsInPlace();
    /// Passes over bytes up to the next frame; throws once it is there or the end is.
    [[noreturn]] void PassOver();
    bool End();

    CFeed feed_;
    CFrameProbe probe_;
    bool ownLength_;
    bool tells_ = true;      ///< the check tells frames from other bytes
    bool torn_ = false;      ///< the window begins with a frame behind a torn place
    bool tailKnown_ = true;  ///< how much stands behind each frame
    u64 size_ = 0;
    u64 smallest_ = 0;  ///< of which the decoder reads so many
    u64 tail_ = 0;
    u64 number_ = 0;
    std::optional<CSumCheck> sums_ = {};  ///< of a recording that somebody else still writes there are none
    std::optional<u64> unlocated_ = {};   ///< first frame behind a torn place whose sum is yet to be found
    std::optional<u64> counted_ = {};     ///< frames that a recording says it has; 0 when it was not finished
};

}  // namespace ovix::measure
