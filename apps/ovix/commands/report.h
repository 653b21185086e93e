#pragma once

#include "apps/ovix/commands/command.h"

namespace ovix::app {

/// The verb that writes frames as one page for a browser.
std::unique_ptr<ICommand> MakeReportCommand();

}  // namespace ovix::app
