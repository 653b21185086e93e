#pragma once

#include <string>

#include "apps/ovix/input/frame_format.h"

namespace ovix::app {

/// "{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}".
std::string GuidText(const GUID& id);

/// The registered name of a pixel type, the name of a root, or the GUID in text.
std::string PixelTypeName(const GUID& id);

/// What the user wrote: a registered name, case aside, or a GUID with or without braces. Throws wrong usage, with the
/// nearest name, for a name that nobody registered.
GUID FindPixelType(const std::string& pixelType);

/// The same with its decoder. Throws wrong usage for a type that no decoder takes.
SFrameFormat FindFormat(const std::string& pixelType, u16 width, u16 height);

}  // namespace ovix::app
