#pragma once

#include <string>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// All that a decoder must know of a frame beside its bytes.
struct SFrameFormat {
    std::string filter;  ///< the name under which the decoder is registered; empty for plain counts
    GUID pixelType = rootIRType;
    std::string pixelTypeName;  ///< as registered, or the GUID in text
    u16 width = 0;              ///< pixels
    u16 height = 0;

    u32 PixelCount() const { return u32{width} * height; }
};

/// "{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}".
OVIX_MEASURE_API std::string GuidText(const GUID& id);

/// The registered name of a pixel type, the name of a root, or the GUID in text.
OVIX_MEASURE_API std::string PixelTypeName(const GUID& id);

/// The format of frames of that type with the decoder that takes them. Throws `CError` (NoDecoder), with the registered
/// name that is nearest to what was asked for in `advice`.
OVIX_MEASURE_API SFrameFormat FormatOf(const GUID& pixelType, u16 width, u16 height, const std::string& asked = {});

/// The type of a registered name, case aside, or of a GUID in text with or without braces. Throws `CError`
/// (WrongArgument, with the nearest registered name in `advice`).
OVIX_MEASURE_API GUID FindPixelType(const std::string& pixelType);

/// The format of a registered name, case aside, or of a GUID in text with or without braces. Throws `CError`
/// (WrongArgument, with the nearest registered name in `advice`; NoDecoder).
OVIX_MEASURE_API SFrameFormat FindFormat(const std::string& pixelType, u16 width, u16 height);

}  // namespace ovix::measure
