#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/ovix/output/palette.h"

namespace ovix::app {

/// The values at the two ends of the palette; `low` lies below `high`, and both are finite.
struct SRange {
    float low = 0;
    float high = 1;
};

/// What a pixel is to a picture.
enum EPixelKind { PixelShown, PixelUnder, PixelOver, PixelNoData };

/// From the status byte, then from the value: NaN is no data, a value beyond the range is under or over.
EPixelKind KindOf(float value, u8 status, SRange range);
SColour ColourOfPixel(float value, EPixelKind kind, SRange range);

/// The range between two finite values; where they are equal, a range of 1 around them.
SRange RangeBetween(float low, float high);
/// From the least to the greatest value that is finite and neither under, over nor without data; 0 to 1 where there is
/// none. `status` may be empty.
SRange RangeOfPixels(std::span<const float> values, std::span<const u8> status);

struct STick {
    double value = 0;
    std::string label;
};

/// Round numbers inside a range, about `wanted` of them and at least one, all with as many decimals as their distance
/// needs.
std::vector<STick> Ticks(SRange range, int wanted);

}  // namespace ovix::app
