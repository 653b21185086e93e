#pragma once

#include "apps/ovix/synth/detector.h"

namespace ovix::app {

/// A camera for 0 to 90 degrees Celsius, as all families have that send the camera record: its counts, and the record
/// that tells how temperatures are made of them.
class CRecordCamera {
  public:
    explicit CRecordCamera(const SSynthOptions& options);

    /// What the detector gives for temperatures in kelvin. Belongs to this object until the next frame.
    const std::vector<u16>& Counts(std::span<const float> kelvin, u64 frame);
    /// Appends the first `size` bytes of the record: 20 ms lie between frames. `swapped` is the other byte order,
    /// big-endian.
    void AppendRecord(std::vector<u8>& bytes, u32 size, u64 frame, bool swapped) const;
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const { return detector_.Correction(); }

  private:
    u16 width_;
    u16 height_;
    reduce::CMeasConv model_;
    CDetector detector_;
    std::vector<float> even_;
    std::vector<u16> counts_;
};

}  // namespace ovix::app
