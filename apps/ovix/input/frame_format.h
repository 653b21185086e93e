#pragma once

#include <optional>
#include <string>

#include "core/core.h"

namespace ovix::app {

/// All that a decoder must be told of a frame beside its bytes.
struct SFrameFormat {
    std::string filter;  ///< the name under which the decoder is registered
    GUID pixelType;
    std::string pixelTypeName;  ///< as registered, or the GUID in text
    u16 width = 0;
    u16 height = 0;

    u32 PixelCount() const { return u32{width} * height; }
};

/// What the decoded pixels of a format are.
struct SPixelForm {
    EDataType type = UInt16;  ///< `UInt16`, or `Opaque` for three 8-bit channels
    EUnit unit = Counts;      ///< base unit of the source
    bool pixels = true;       ///< false for a type that stands for a header alone
    bool compressed = false;  ///< the pixels do not stand plainly in the frame: a decoder of a library unpacks them

    u32 BytesPerPixel() const { return type == Opaque ? 3 : 2; }
};

/// The pixel type of the decoder whose frames begin with the header that `type` stands for alone; nothing for a type of
/// whole frames.
std::optional<GUID> TypeOfHeader(const std::string& filter, const GUID& type);

/// As the format's decoder says. Throws `CFault` when nobody registered the decoder, and when it does not say.
SPixelForm PixelFormOf(const SFrameFormat& format);

}  // namespace ovix::app
