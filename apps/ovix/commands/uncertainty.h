#pragma once

#include "apps/ovix/commands/command.h"

namespace ovix::app {

/// The verb that tells the uncertainty of a pixel or a region.
std::unique_ptr<ICommand> MakeUncertaintyCommand();

}  // namespace ovix::app
