#include "apps/ovix/synth/video.h"

#include <algorithm>

#include "apps/ovix/output/palette.h"

namespace ovix::app {
namespace {

SColour ColourOf(float kelvin) {
    constexpr float kBlack = 283.15f;
    constexpr float kWhite = 358.15f;
    return PaletteColour(kelvin, kBlack, kWhite);
}

/// Red, green and blue to luma and the two differences of colour, in the usual studio range.
struct SYuv {
    explicit SYuv(SColour c)
        : y(static_cast<u8>((66 * c.red + 129 * c.green + 25 * c.blue + 128) / 256 + 16)),
          u(static_cast<u8>((-38 * c.red - 74 * c.green + 112 * c.blue + 128) / 256 + 128)),
          v(static_cast<u8>((112 * c.red - 94 * c.green - 18 * c.blue + 128) / 256 + 128)) {}
    u8 y;
    u8 u;
    u8 v;
};

}  // namespace

std::vector<u8> YuvPicture(std::span<const float> kelvin, SYuvPlaces places) {
    std::vector<u8> bytes(kelvin.size() * 2);
    for (std::size_t i = 0; i + 1 < kelvin.size(); i += 2) {
        const SYuv first(ColourOf(kelvin[i]));
        const SYuv second(ColourOf(kelvin[i + 1]));
        u8* pair = &bytes[i * 2];
        pair[places.y0] = first.y;
        pair[places.u] = first.u;
        pair[places.y1] = second.y;
        pair[places.v] = first.v;
    }
    return bytes;
}

std::vector<u8> BGRPicture(std::span<const float> kelvin, u16 width, u16 height) {
    std::vector<u8> bytes;
    bytes.reserve(kelvin.size() * 3);
    for (u32 y = height; y-- > 0;) {
        for (u32 x = 0; x < width; ++x) {
            const SColour c = ColourOf(kelvin[y * width + x]);
            for (const u8 channel : {c.blue, c.green, c.red}) bytes.push_back(channel);
        }
    }
    return bytes;
}

}  // namespace ovix::app
