#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/ovix/commands/stats_rows.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

/// What holds for all rows of one input.
struct SStatsHead {
    std::string file;
    EUnit unit = Counts;
    SUnitText text;
    Json parameters;
    u64 lastFrame = 0;            ///< the highest number that a row may bear
    std::size_t longestName = 0;  ///< of the regions, in characters
    std::size_t regions = 1;      ///< how many
};

/// What is known at the end of one input.
struct SStatsEnd {
    u64 skipped = 0;
    bool complete = true;  ///< false when an error ended the run, frames were skipped or the source is damaged
    std::vector<measure::SFinding> findings = {};
};

/// Writes rows of figures as they come: `Open`, for each input `Begin`, rows and `End`, or
/// `Failed` where an error came before its first row, and `Close`.
class IStatsPrinter {
  public:
    virtual ~IStatsPrinter() = default;
    virtual void Open(std::size_t) {}
    /// Before the first row. Throws `CFault` for a unit that cannot stand under the columns that are there already.
    virtual void Begin(const SStatsHead& head) = 0;
    virtual void Row(const SStatsRow& row) = 0;
    /// After the last row, also of a run that an error ended: what is written is still one document.
    virtual void End(const SStatsEnd&) {}
    virtual void Failed(const std::string&, const CFault&) {}
    virtual void Close() {}
};

/// Takes what is printed, with what an open document needs behind it to be whole, as `Print` does.
using StatsSink = std::function<void(std::string_view text, std::optional<std::string_view> closing)>;

/// Aligned columns under a header; on a terminal as many of them as fit.
std::unique_ptr<IStatsPrinter> MakeTablePrinter(const SStatsWish& wish);
/// One line a row, the unit in the names of the columns, numbers that read back exactly.
std::unique_ptr<IStatsPrinter> MakeCsvPrinter(const SStatsWish& wish, StatsSink sink = Print);
/// One JSON document; `hasRows` false leaves out the rows, for who has them elsewhere.
std::unique_ptr<IStatsPrinter> MakeJsonPrinter(const SStatsWish& wish, StatsSink sink = Print, bool hasRows = true);
/// One of both in a file, which is there when it is closed; beside `out.csv` the document without rows, `out.csv.json`.
std::unique_ptr<IStatsPrinter> MakeFilePrinter(const SStatsWish& wish, bool json, const std::filesystem::path& target,
                                               bool overwrite);

}  // namespace ovix::app
