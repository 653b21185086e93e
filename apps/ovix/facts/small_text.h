#pragma once

#include <string>

namespace ovix::app {

/// The content of a file that people write or read, "-" for the standard input. Throws `CFault` for one that cannot be
/// read, and, with what was expected of it, for one of more than 16 MiB.
std::string ReadSmallText(const std::string& path, const char* expected);

}  // namespace ovix::app
