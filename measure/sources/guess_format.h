#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "measure/sources/frame_format.h"

namespace ovix::measure {

/// What bytes speak for a type and a size.
struct SGuess {
    SFrameFormat format;
    u32 frameSize = 0;          ///< bytes from one frame to the next; 0 when they differ
    bool mark = false;          ///< the family has a mark and the frames bear it
    bool sizeInHeader = false;  ///< the frames name this size
    bool counterRises = false;  ///< by one from the first frame to the second
    bool noRemainder = false;   ///< the file is a whole number of frames

    bool Full() const { return mark && sizeInHeader && noRemainder; }
    /// How much speaks for it.
    int Weight() const {
        return (mark ? 4 : 0) + (sizeInHeader ? 4 : 0) + (noRemainder ? 2 : 0) + (counterRises ? 1 : 0);
    }
};

/// The types and sizes as which the frames of a dump pass, best first; none for a file that no family takes. Every
/// registered type is tried with the sizes that detectors and screens commonly have and with those that the frames
/// name; one of which any bytes would pass is left out. Throws `CError` for a file that cannot be read.
OVIX_MEASURE_API std::vector<SGuess> GuessFormat(const std::filesystem::path& path);
/// The same for bytes with which a stream begins; a last frame of them that is not whole yet says nothing.
OVIX_MEASURE_API std::vector<SGuess> GuessFormat(std::span<const u8> start);

}  // namespace ovix::measure
