#pragma once

#include "core/pixel_types.h"

/// The frames of a camera that does not exist: a header of 16 bytes, then width times height counts of 16 bits, line by
/// line. All numbers are little-endian.
namespace toy {

using namespace ovix;

/// A frame format of its own needs a GUID of its own: make one with `uuidgen`.
inline constexpr GUID kPixelType = "{B7D3A1F2-5C0E-4E1B-9E63-0A6C9D2F4B11}"_guid;

// Offsets in the header.
inline constexpr u32 kMagic = 0;         ///< the four letters "TOY1"
inline constexpr u32 kFrameNumber = 4;   ///< unsigned 32-bit, counts all frames
inline constexpr u32 kSeconds = 8;       ///< unsigned 32-bit, since the start of 1970, UTC
inline constexpr u32 kChassisTemp = 12;  ///< signed 16-bit, hundredths of a degree Celsius
inline constexpr u32 kPreset = 14;       ///< unsigned 8-bit, 0 to 7; the byte behind it is 0
inline constexpr u32 kHeaderSize = 16;

}  // namespace toy
