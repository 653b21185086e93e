#pragma once

#include <string>
#include <vector>

#include "apps/manual/option.h"

namespace ovix::app {

std::string BashCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);
std::string ZshCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);
std::string FishCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);

}  // namespace ovix::app
