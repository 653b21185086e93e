#pragma once

#include <span>
#include <string>

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// "run.krt: damage: offset 1808: wrong CRC of the block, expected …, found …", in one line without its end.
std::string FindingLine(const std::string& file, const measure::SFinding& finding);

/// Each with an identifier that stays ("OVX-F203"), its weight and its place.
Json FindingsJson(std::span<const measure::SFinding> findings);

}  // namespace ovix::app
