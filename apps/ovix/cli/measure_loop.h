#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "apps/ovix/cli/frame_loop.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "apps/ovix/pipeline/measurement.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// Measures the frames of a loop one after the other, or, where they are to be merged, each cycle of presets as one
/// frame: consecutive frames up to the one whose preset was there already.
class CMeasureLoop {
  public:
    using Sink = std::function<void(const SMeasuredFrame&)>;

    /// Adds the option "--merge-presets".
    static void AddOption(CLI::App& verb, bool& merge);

    /// All are borrowed.
    CMeasureLoop(CFrameLoop& frames, IFrameSource& source, CMeasurement& measurement, bool merge);

    /// Throws as `CFrameLoop` does. A fault of one frame of a cycle costs the whole of it.
    void Run(const Sink& sink);
    void RunAhead(const Sink& sink);
    /// How many frames come out if none is skipped. Looks through the metadata of all frames that are to be merged.
    u64 Count();
    /// How many came out of the last run.
    u64 Done() const { return done_; }

  private:
    using Cycle = std::vector<u64>;

    /// The frame begins or continues a cycle; answers the one that it ends, empty for none.
    Cycle Add(u64 number);
    Cycle EndCycle();
    u8 PresetOf(u64 number);
    CFrameLoop::Work Work(const Sink& sink);
    CFrameLoop::Rest Rest(const Sink& sink);

    CFrameLoop& frames_;
    IFrameSource& source_;
    CMeasurement& measurement_;
    std::optional<CGuardedDecode> decode_;  ///< where frames are to be merged
    reduce::CReduceObjectArray objects_;
    std::vector<u8> frame_;
    Cycle cycle_;  ///< the frames so far
    std::vector<u8> presets_;
    u64 done_ = 0;
};

}  // namespace ovix::app
