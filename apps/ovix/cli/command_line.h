#pragma once

#include <string>
#include <vector>

#include "apps/ovix/app_error.h"

namespace ovix::app {

/// Runs what the arguments (without the program's name) say. Failures are thrown as `CAppError`.
EExit RunCommandLine(const std::vector<std::string>& arguments);

}  // namespace ovix::app
