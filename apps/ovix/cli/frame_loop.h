#pragma once

#include <functional>

#include "apps/ovix/cli/frame_selection.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

enum class EOnError { Stop, Skip };

/// Work on one frame after the other. A fault that names its frame is what `--on-error` is about: it ends the run, or
/// it is reported and the run goes on. All other errors end the run.
class CFrameLoop {
  public:
    using Work = std::function<void(u64 frame)>;
    using Rest = std::function<void()>;

    CFrameLoop(CFrameNumbers frames, EOnError onError) : frames_(std::move(frames)), onError_(onError) {}

    /// Throws when not one frame would do. `rest` is what the work leaves to be done behind the last frame; its faults
    /// are treated like those of the work.
    void Run(const Work& work, const Rest& rest = {});
    /// A pass ahead of `Run` over the same frames: which are skipped is left to that to say.
    void RunAhead(const Work& work, const Rest& rest = {});

    const CFrameNumbers& Frames() const { return frames_; }
    u64 Count() const { return frames_.Count(); }
    u64 Done() const { return done_; }
    u64 Skipped() const { return skipped_; }
    EExit Exit() const { return skipped_ ? ExitSkipped : ExitDone; }

  private:
    using Report = std::function<void(const CFault&)>;

    void Go(const Work& work, const Rest& rest, const char* doing, const Report& report);

    CFrameNumbers frames_;
    EOnError onError_;
    u64 done_ = 0;
    u64 skipped_ = 0;
};

}  // namespace ovix::app
