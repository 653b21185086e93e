#pragma once

#include <span>
#include <string>

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// The bytes of one frame beside the fields that its decoder tells of them, in their order in the frame. Each row has
/// "offset", "size" and "kind": a "field" with its name and decoded value, "pixels", whose bytes are not shown, or
/// "other" for bytes that no field covers. "bytes" are in hexadecimal digits; a field that is longer than a header's,
/// as a compressed image, has none. The frame is left as it is. Throws `CFault` (offset, expected, found) for a frame
/// that would not do.
Json HexdumpJson(std::span<u8> frame, const measure::SFrameFormat& format);

/// The same rows as a table: 16 bytes a line, other bytes that are all alike in one.
std::string HexdumpTable(const Json& rows);

}  // namespace ovix::app
