#pragma once

#include <optional>

#include "measure/sources/frame_format.h"
#include "measure/sources/frame_layout.h"

namespace ovix::measure {

/// Plain counts in a file of another kind, which says where they stand.
struct SArrayFile {
    SFrameFormat format;          ///< counts or counts-be
    std::vector<SExtent> frames;  ///< of those that are whole
    u64 stated = 0;               ///< how many the file says that there are
};

/// Looks into a NumPy file (version 1 to 3, 16-bit unsigned, rows first, two or three dimensions) and a TIFF or BigTIFF
/// (each page 16-bit unsigned, one sample, not compressed, in one piece). Nothing for a file of neither kind; throws
/// `CError` (UnknownFormat) for one of them that holds something else, with what it holds.
std::optional<SArrayFile> FindArray(const IBytes& bytes);

/// Frames wherever they stand.
class CListedFrames final : public IFrameLayout {
  public:
    explicit CListedFrames(std::vector<SExtent> frames) : frames_(std::move(frames)) {}
    u64 Count() const override { return frames_.size(); }
    std::optional<SExtent> Find(u64 frame) const override {
        return frame < frames_.size() ? std::optional(frames_[frame]) : std::nullopt;
    }
    u64 FrameSize() const override { return frames_.front().size; }

  private:
    std::vector<SExtent> frames_;
};

}  // namespace ovix::measure
