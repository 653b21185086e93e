#include "apps/ovix/cli/frame_loop.h"

#include <fmt/format.h>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

void CFrameLoop::Run(const Work& work) {
    Go(work, "frame", [](const CFault& fault) { Say(std::string(fault.what()) + " (skipped)"); });
    if (!done_) throw CAppError(ExitBadData, fmt::format("not one of {} frames would do", Count()));
}

void CFrameLoop::RunAhead(const Work& work) {
    Go(work, "looking ahead: frame", [](const CFault&) {});
}

void CFrameLoop::Go(const Work& work, const char* doing, const std::function<void(const CFault&)>& report) {
    CProgress progress(doing, Count());
    done_ = skipped_ = 0;
    for (u64 n = 0; n < Count(); ++n) {
        progress.Show(n);
        try {
            work(frames_[n]);
            ++done_;
        } catch (const CFault& fault) {
            if (!fault.Facts().frame || onError_ == EOnError::Stop) throw;
            ++skipped_;
            progress.Hide();
            report(fault);
        }
    }
}

}  // namespace ovix::app
