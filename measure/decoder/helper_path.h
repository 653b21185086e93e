#pragma once

#include <string>

namespace ovix::measure {

/// The program that decodes compressed frames: `ovix-decode` beside `ovix.measure.so`, where it is installed and
/// in the build tree.
std::string HelperPath();

}  // namespace ovix::measure
