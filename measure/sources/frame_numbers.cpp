#include "measure/sources/frame_numbers.h"

#include <algorithm>
#include <utility>

#include "measure/text.h"

namespace ovix::measure {

CFrameNumbers::CFrameNumbers(std::vector<SRun> runs) : runs_(std::move(runs)) {
    ends_.reserve(runs_.size());
    u64 end = 0;
    for (const SRun& run : runs_) {
        if (run.last < run.first || run.step < 1)
            throw CError({.id = EError::WrongArgument,
                          .expected = "a run of frames that goes forward",
                          .found = Say(run.first, " to ", run.last, " in steps of ", run.step)});
        ends_.push_back(end += run.Count());
    }
}

u64 CFrameNumbers::Count() const { return ends_.empty() ? 0 : ends_.back(); }

u64 CFrameNumbers::operator[](u64 n) const {
    const auto run = static_cast<std::size_t>(std::upper_bound(ends_.begin(), ends_.end(), n) - ends_.begin());
    if (run == runs_.size())
        throw CError({.id = EError::NoSuchFrame, .expected = Say("at most ", Count(), " frames"), .found = Say(n)});
    return runs_[run].first + (n - (run ? ends_[run - 1] : 0)) * runs_[run].step;
}

}  // namespace ovix::measure
