#pragma once

#include <string>
#include <vector>

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// What the tool was called with, for all that is written from here on.
void RememberCommandLine(const std::vector<std::string>& arguments);

/// Where the values of a run come from: version and command line, the input with its size and the CRCs of its metadata,
/// the limits of corrected counts, and a user calibration as its file says it. The same call on the same input gives
/// the same: "created" is there only where SOURCE_DATE_EPOCH says when. Throws wrong usage where that is no number.
Json ProvenanceJson(const measure::CSource& source, const measure::SMeasureOptions& options);

}  // namespace ovix::app
