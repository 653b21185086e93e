#pragma once

#include <span>

#include "core/core.h"

namespace ovix::app {

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

/// A perceptually uniform palette as 0xRRGGBB: equal steps look equal, and lightness rises from end to end, so that it
/// holds in grey print and for colour-blind eyes.
extern const u32 kInferno[256];

/// A palette by name: 256 colours as 0xRRGGBB, whose lightness goes one way from end to end.
struct SPalette {
    const char* name;
    std::span<const u32, 256> colours;
};

/// The first is the one that is taken where none is asked for.
std::span<const SPalette> Palettes();

/// What the palette cannot say has colours that do not occur in it.
inline constexpr SColour kUnderColour = ColourOf(0x3B82F6);
inline constexpr SColour kOverColour = ColourOf(0x34D399);
inline constexpr SColour kNoDataColour = ColourOf(0x7C8087);

/// The colour of a value between `low` and `high`, which differ; values beyond are taken at the ends. Not for NaN.
SColour PaletteColour(float value, float low, float high);

}  // namespace ovix::app
