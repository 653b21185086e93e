#pragma once

#include <string>

#include "apps/ovix/input/input_file.h"

namespace ovix::app {

/// The content of a file that people write or read. Throws `CFault`, with what was expected of it, for one of more than
/// 16 MiB.
std::string ReadSmallText(const CInputFile& file, const char* expected);

}  // namespace ovix::app
