#pragma once

#include <vector>

#include "apps/ovix/region.h"

namespace ovix::app {

/// A warm machine with a hot bearing and a cool pipe before a wall, with a temperature at every point. The scene is
/// told in shares of the picture, so that it looks the same at every size; from frame to frame the shaft turns and the
/// bearing warms a little.

/// The temperatures in kelvin of width times height pixels, row by row; within 283 to 363 K.
std::vector<float> RenderScene(u16 width, u16 height, u64 frame);

/// "bearing", "pipe" and "housing": three regions that show the hottest part, the coolest and the body. For pictures of
/// at least 32 x 32 pixels.
std::vector<SRegion> SceneRegions(u16 width, u16 height);

}  // namespace ovix::app
