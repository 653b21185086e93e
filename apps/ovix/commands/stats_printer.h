#pragma once

#include <memory>
#include <span>
#include <string>

#include "apps/ovix/json.h"
#include "apps/ovix/pipeline/region_stats.h"

namespace ovix::app {

/// What holds for all rows of a run.
struct SStatsHead {
    EUnit unit = Counts;
    SUnitText text;
    Json parameters;
    u64 lastFrame = 0;            ///< the highest number that a row may bear
    std::size_t longestName = 0;  ///< of the regions
};

/// Writes rows of figures to the standard output as they come.
class IStatsPrinter {
  public:
    virtual ~IStatsPrinter() = default;
    /// Before the first row.
    virtual void Begin(const SStatsHead& head) = 0;
    virtual void Row(const SRegionStats& row) = 0;
    /// After the last row; `complete` is false when an error ended the run, so that what is written is still one
    /// document.
    virtual void End(u64 skipped, bool complete) = 0;
};

/// Aligned columns under a header.
std::unique_ptr<IStatsPrinter> MakeTablePrinter();
/// One line a row, the unit in the names of the columns, numbers that read back exactly.
std::unique_ptr<IStatsPrinter> MakeCsvPrinter();
/// One JSON document.
std::unique_ptr<IStatsPrinter> MakeJsonPrinter();

}  // namespace ovix::app
