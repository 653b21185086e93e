#pragma once

#include <string>
#include <vector>

#include "apps/manual/option.h"

namespace ovix::app {

/// ovix.1: what the tool is, with all its verbs.
std::string ToolPage(const SVerb& tool, const std::vector<SVerb>& verbs, const std::string& version);
/// ovix-VERB.1.
std::string VerbPage(const SVerb& verb, const std::string& version);

}  // namespace ovix::app
