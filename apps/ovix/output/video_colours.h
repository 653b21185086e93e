#pragma once

#include <memory>
#include <vector>

#include "measure/measure.h"

namespace ovix::app {

/// The colours of video frames, of which a measurement gives one number a pixel.
class CVideoColours {
  public:
    /// None.
    CVideoColours() = default;
    /// Those of the measurement's source, where it is video with numbered frames of which no certain quantity is asked
    /// for; else none. A pipe's frames are gone when a second colour would be read.
    explicit CVideoColours(const measure::CMeasurement& measurement);

    explicit operator bool() const { return channels_ != nullptr; }
    /// 0xRRGGBB for each pixel of a measured frame. On any number of threads.
    std::vector<u32> Of(const measure::CFrame& frame) const;

  private:
    std::shared_ptr<const std::vector<measure::CMeasurement>> channels_;  ///< red, green, blue
};

}  // namespace ovix::app
