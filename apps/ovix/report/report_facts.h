#pragma once

#include <vector>

#include "apps/ovix/report/report_page.h"
#include "measure/measure.h"

namespace ovix::app {

/// What a reader may want to know of a page's values: how they were rounded, the scene and the calibration of `first`,
/// one of its frames, what the source is worth, and where it all comes from. Tables without rows are left out.
std::vector<SFactSection> ReportFacts(const SReport& report, const measure::CMeasurement& measurement,
                                      const measure::CFrame& first, u64 skipped);

}  // namespace ovix::app
