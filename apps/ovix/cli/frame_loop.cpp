#include "apps/ovix/cli/frame_loop.h"

#include <fmt/format.h>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

void CFrameLoop::Run(const Work& work, const Rest& rest) {
    Go(work, rest, "frame", [](const CFault& fault) { Say(std::string(fault.what()) + " (skipped)"); });
    if (!done_) throw CAppError(ExitBadData, fmt::format("not one of {} frames would do", Count()));
}

void CFrameLoop::RunAhead(const Work& work, const Rest& rest) {
    Go(work, rest, "looking ahead: frame", [](const CFault&) {});
}

void CFrameLoop::Go(const Work& work, const Rest& rest, const char* doing, const Report& report) {
    CProgress progress(doing, Count());
    done_ = skipped_ = 0;
    const auto tries = [&](const auto& step) {
        try {
            step();
            return true;
        } catch (const CFault& fault) {
            if (!fault.Facts().frame || onError_ == EOnError::Stop) throw;
            ++skipped_;
            progress.Hide();
            report(fault);
            return false;
        }
    };
    for (u64 n = 0; n < Count(); ++n) {
        progress.Show(n);
        if (tries([&] { work(frames_[n]); })) ++done_;
    }
    if (rest) tries(rest);
}

}  // namespace ovix::app
