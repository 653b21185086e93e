#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/core.h"

namespace ovix::app {

// From values to colours.

struct SColour {
    u8 red = 0;
    u8 green = 0;
    u8 blue = 0;

    friend constexpr bool operator==(const SColour&, const SColour&) = default;
};

/// From 0xRRGGBB.
constexpr SColour ColourOf(u32 rgb) {
    return {static_cast<u8>(rgb >> 16), static_cast<u8>(rgb >> 8), static_cast<u8>(rgb)};
}

/// A perceptually uniform palette: equal steps look equal, and lightness goes one way from end to end, so that it holds
/// in grey print and for colour-blind eyes.
struct SPalette {
    const char* name;
    std::span<const u32, 256> colours;  ///< 0xRRGGBB, from the lowest value to the highest

    /// The colour of a share of the way from the first entry to the last; beyond 0 to 1, that of the end. Not for NaN.
    SColour At(double share) const;
};

/// "inferno", "magma", "viridis", "cividis", "grey" and "grey-inverted"; the first is what is taken unless another is
/// asked for.
std::span<const SPalette> Palettes();

/// The values at the two ends of the palette; `low` lies below `high`, and both are finite.
struct SRange {
    float low = 0;
    float high = 1;
};

/// What a pixel is to a picture. Beyond the palette is a matter of the picture, beyond the calibration one of the
/// camera: the two look different.
enum EPixelKind {
    PixelShown,
    PixelUncalibrated,  ///< outside the calibrated range, but with a value: in the palette's colour, hatched
    PixelBelow,         ///< a good value below the palette
    PixelAbove,
    PixelUnder,  ///< below what the camera can measure
    PixelOver,
    PixelNoData,
    PixelKinds
};

// What a palette cannot say has colours that occur in none of them, nor look like one.
inline constexpr SColour kBelowColour = ColourOf(0x3B82F6);
inline constexpr SColour kAboveColour = ColourOf(0x39FF14);
inline constexpr SColour kUnderColour = ColourOf(0x7C3AED);
inline constexpr SColour kOverColour = ColourOf(0xE040FB);
inline constexpr SColour kNoDataColour = ColourOf(0x4D7C0F);

/// From the status byte, then from the value: NaN is no data.
EPixelKind KindOf(float value, u8 status, SRange range);
SColour ColourOfPixel(const SPalette& palette, float value, EPixelKind kind, SRange range);

/// The least and the greatest of the finite values whose status has no bit of `without`; none where there is no such
/// value. `status` may be empty.
std::optional<SRange> Extremes(std::span<const float> values, std::span<const u8> status, u8 without);
/// The range between two finite values; where they are equal, a range of 1 around them.
SRange RangeBetween(float low, float high);

struct STick {
    double value = 0;
    std::string label;
};

/// Round numbers inside a range, about `wanted` of them and at least one, all with as many decimals as their distance
/// needs.
std::vector<STick> Ticks(SRange range, int wanted);

}  // namespace ovix::app
