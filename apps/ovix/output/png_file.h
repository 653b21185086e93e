#pragma once

#include <functional>
#include <string>
#include <vector>

#include "apps/ovix/output/canvas.h"

namespace ovix::app {

/// The pixels of a picture as PNG packs them.
struct SPngRows {
    u32 width = 0;
    u32 height = 0;
    bool grey16 = false;    ///< one value of 16 bits a pixel, big-endian; else red, green and blue
    std::vector<u8> bytes;  ///< each row behind the byte that names its filter
};

/// Of rows of 0xRRGGBB. Their filter is 0, "none": a palette's colours repeat, their differences do not.
SPngRows RowsOf(int width, int height, const std::function<const u32*(int y)>& row);
SPngRows RowsOf(const CCanvas& canvas);

/// The bytes of a file. `description` is ASCII, `level` is one of `Deflated`.
std::vector<u8> PngOf(const SPngRows& rows, std::string description, int level);

}  // namespace ovix::app
