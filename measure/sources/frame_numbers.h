#pragma once

#include <vector>

#include "measure/api.h"
#include "measure/error.h"

namespace ovix::measure {

/// The numbers of chosen frames in the order of the choice, without a list of them.
class OVIX_MEASURE_API CFrameNumbers {
  public:
    struct SRun {
        u64 first = 0;
        u64 last = 0;  ///< included when the step meets it; at least `first`
        u64 step = 1;  ///< at least 1

        u64 Count() const { return (last - first) / step + 1; }
    };

    CFrameNumbers() = default;
    explicit CFrameNumbers(std::vector<SRun> runs);
    static CFrameNumbers All(u64 count) { return count ? CFrameNumbers({{0, count - 1, 1}}) : CFrameNumbers(); }

    u64 Count() const;
    /// The n-th chosen frame, n below `Count()`; in the logarithm of the runs.
    u64 operator[](u64 n) const;

  private:
    std::vector<SRun> runs_;
    std::vector<u64> ends_;  ///< the frames up to the end of each run
};

}  // namespace ovix::measure
