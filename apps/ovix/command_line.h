#pragma once

#include <functional>
#include <string>
#include <vector>

#include "apps/ovix/app_error.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// Runs what the arguments (without the program's name) say. Failures are thrown as `CAppError`.
EExit RunCommandLine(const std::vector<std::string>& arguments);

/// Takes command lines apart as `RunCommandLine` does, and runs nothing.
std::function<void(const std::vector<std::string>&)> MakeCommandLineParser();

/// Shows the verbs with all their options, of which help, manual and completion are made.
void WithCommandTree(const std::function<void(const CLI::App&)>& use);

}  // namespace ovix::app
