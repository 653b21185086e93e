#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/region.h"
#include "apps/ovix/units.h"

namespace ovix::app {

/// What holds for all rows of a run.
struct SStatsHead {
    EUnit unit = Counts;
    SUnitText text;
    Json parameters;
    u64 lastFrame = 0;            ///< the highest number that a row may bear
    std::size_t longestName = 0;  ///< of the regions
};

/// The figures of one region of one frame.
struct SStatsRow {
    u64 frame = 0;
    SRegion region;
    measure::SRegionStats figures = {};
};

/// What is known at the end of a run.
struct SStatsEnd {
    u64 skipped = 0;
    bool complete = true;  ///< false when an error ended the run, frames were skipped or the source is damaged
    std::vector<measure::SFinding> findings = {};
};

/// Writes rows of figures to the standard output as they come.
class IStatsPrinter {
  public:
    virtual ~IStatsPrinter() = default;
    /// Before the first row.
    virtual void Begin(const SStatsHead& head) = 0;
    virtual void Row(const SStatsRow& row) = 0;
    /// After the last row, also of a run that an error ended: what is written is still one document.
    virtual void End(const SStatsEnd& end) = 0;
};

/// Aligned columns under a header.
std::unique_ptr<IStatsPrinter> MakeTablePrinter();
/// One line a row, the unit in the names of the columns, numbers that read back exactly.
std::unique_ptr<IStatsPrinter> MakeCsvPrinter();
/// One JSON document.
std::unique_ptr<IStatsPrinter> MakeJsonPrinter();

}  // namespace ovix::app
