#pragma once

#include <filesystem>

namespace ovix::app {

// No output replaces what is read, whatever names it has: sources, calibrations, regions, points. Who opens one says
// so, and who writes a file asks, also when it is about to take its place.

/// "-" is the standard input. What is no regular file, or is not there, is left to whoever opens it.
void RememberInput(const std::filesystem::path& file);
/// Answers the output; throws wrong usage for a file that was remembered.
const std::filesystem::path& RequireNoInput(const std::filesystem::path& output);

}  // namespace ovix::app
