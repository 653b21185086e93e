#pragma once

#include "apps/ovix/synth/detector.h"

namespace ovix::app {

/// A camera for 0 to 90 degrees Celsius, as all families have that send the camera record: its counts, and the record
/// that tells how temperatures are made of them.
class CRecordCamera {
  public:
    explicit CRecordCamera(const SSynthOptions& options);

    /// What the detector gives for temperatures in kelvin.
    std::vector<u16> Counts(std::span<const float> kelvin, u64 frame) const {
        return detector_.Read(response_.At(kelvin), frame);
    }
    /// Appends the first `size` bytes of the record: 20 ms lie between frames. `swapped` is the other byte order,
    /// big-endian.
    void AppendRecord(std::vector<u8>& bytes, u32 size, u64 frame, bool swapped) const;
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const { return detector_.Correction(); }

  private:
    u16 width_;
    u16 height_;
    CResponse response_;
    CDetector detector_;
};

// The scene as a colour picture: temperatures from 10 to 85 degrees Celsius in the palette's colours.

/// Where the luma of two neighbouring pixels and the colour that they share stand in their four bytes.
struct SYuvPlaces {
    u8 y0, u, y1, v;
};
inline constexpr SYuvPlaces kUYVYPlaces{1, 0, 3, 2};
inline constexpr SYuvPlaces kYUY2Places{0, 1, 2, 3};

/// 2 bytes a pixel; two pixels share the colour of the first.
std::vector<u8> YuvPicture(std::span<const float> kelvin, SYuvPlaces places);
/// Blue, green and red, lines from the bottom up.
std::vector<u8> BGRPicture(std::span<const float> kelvin, u16 width, u16 height);

}  // namespace ovix::app
