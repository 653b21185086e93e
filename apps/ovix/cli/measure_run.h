#pragma once

#include <optional>

#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/text/console.h"
#include "measure/measure.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// Measures the chosen frames with what the command line says of threads, faults and merging; says what was skipped as
/// it comes, and how far it is.
class CMeasureRun {
  public:
    /// Adds the option "--merge-presets".
    static void AddOption(CLI::App& verb, bool& merge);

    /// All are borrowed.
    CMeasureRun(const measure::CMeasurement& measurement, const CSourceArguments& arguments, bool merge);

    const measure::CSource& Source() const { return measurement_.Source(); }

    /// `map(frame)` runs on several threads at once, `sink(result)` or `sink(result, frame)` on the caller's, in the
    /// order of the frames. Throws when not one frame would do.
    template <class Map, class Sink>
    void Run(const Map& map, const Sink& sink) {
        measure::CSeries series(measurement_, Options("frame", true));
        series_ = &series;
        series.Run(map, sink);
        End(true);
    }
    /// A pass ahead of `Run` over the same frames: which are skipped is left to that to say.
    template <class Map, class Sink>
    void RunAhead(const Map& map, const Sink& sink) {
        measure::CSeries series(measurement_, Options("looking ahead: frame", false));
        series_ = &series;
        series.Run(map, sink);
        End(false);
    }

    /// The first of the chosen frames that will do, of a source with numbers: what holds for all of them shows in it.
    /// Throws its error where the run would stop at an earlier one.
    measure::CFrame First();
    /// How many frames come out if none is skipped; nothing where nobody knows it before their end. Looks through the
    /// metadata of all frames that are to be merged.
    std::optional<u64> Results();
    u64 Done() const { return done_; }
    u64 Skipped() const { return skipped_; }
    EExit Exit() const { return CSourceArguments::Exit(measurement_.Source(), skipped_); }

  private:
    std::optional<u64> Count() const;
    CAppError NothingDone() const;
    u64 CountMerged();
    measure::SSeriesOptions Options(const char* doing, bool says);
    void Progress(u64 done, std::optional<u64> total, bool says);
    void SaySkipped();
    void End(bool says);

    const measure::CMeasurement& measurement_;
    const CSourceArguments& arguments_;
    std::optional<measure::CFrameNumbers> frames_;
    bool merge_;
    std::optional<CProgress> progress_;
    measure::CSeries* series_ = nullptr;  ///< while it runs
    std::size_t saidFaults_ = 0;
    std::size_t saidFindings_ = 0;
    u64 done_ = 0;
    u64 skipped_ = 0;
};

}  // namespace ovix::app
