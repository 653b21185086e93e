#pragma once

#include <functional>

#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

/// Of two statuses the worse one: done, done but frames were skipped, bad data, a file, wrong usage.
EExit Worse(EExit a, EExit b);

/// Runs `run` for each input and answers the status of the worst. What it throws ends one input and not the others: it
/// is said and handed to `failed`; the error of a single input, and an interrupt, is thrown on.
EExit ForEachInput(const std::vector<CSourceArguments>& inputs,
                   const std::function<EExit(const CSourceArguments& input)>& run,
                   const std::function<void(const CSourceArguments& input, const CFault& fault)>& failed);

}  // namespace ovix::app
