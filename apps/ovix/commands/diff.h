#pragma once

#include "apps/ovix/commands/command.h"

namespace ovix::app {

/// The verb that holds two sources together.
std::unique_ptr<ICommand> MakeDiffCommand();

}  // namespace ovix::app
