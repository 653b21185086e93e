#pragma once

#include <vector>

#include "apps/ovix/input/dump_layout.h"

namespace ovix::app {

/// Frames of a JPEG-LS stream: 32 bits with the length of the compressed image, the image, and a container that says
/// where its last part ends. Zeros may stand between frames. When a frame's length is damaged, the run goes on at the
/// next place where a frame makes sense, and all bytes before it are the damaged frame.
///
/// The file is walked once when the layout is made; the places of some frames are kept, never more than a fixed number.
class COwnLengthLayout final : public IDumpLayout {
  public:
    /// Null for a format whose frames do not tell their length.
    static std::unique_ptr<IDumpLayout> Make(const CInputFile& file, const SFrameFormat& format);
    explicit COwnLengthLayout(const CInputFile& file);

    u64 Count() const override { return count_; }
    SExtent Of(u64 frame) override;
    u64 FrameSize() const override { return 0; }

  private:
    /// The length that the bytes at a place tell; 0 when they are no frame.
    u64 LengthAt(u64 offset) const;
    /// The frame at or behind a place; of size 0 when only padding is left.
    SExtent FrameAt(u64 offset) const;
    /// The next place from `offset` on at which a frame makes sense; the end of the file when there is none near.
    u64 NextStart(u64 offset) const;
    void Keep(u64 frame, u64 offset);

    const CInputFile& file_;
    u64 count_ = 0;
    std::vector<u64> kept_;  ///< the offsets of the frames 0, stride, 2 stride, ...
    u64 stride_ = 1;
    u64 lastFrame_ = 0;  ///< the frame asked for last, where the next one is looked for
    SExtent last_;
};

}  // namespace ovix::app
