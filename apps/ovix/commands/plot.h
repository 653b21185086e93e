#pragma once

#include "apps/ovix/commands/command.h"

namespace ovix::app {

/// The verb that draws figures over time, profiles and histograms.
std::unique_ptr<ICommand> MakePlotCommand();

}  // namespace ovix::app
