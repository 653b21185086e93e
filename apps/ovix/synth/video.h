#pragma once

#include <array>
#include <span>
#include <vector>

#include "core/core.h"

namespace ovix::app {

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
