#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

#include "measure/frame/measurement.h"
#include "measure/sources/frame_numbers.h"

namespace ovix::measure {

/// What a series does with a frame that will not do.
enum class EOnFault : u8 {
    Stop,  ///< throws its error, after all frames before it were handed over
    Skip,  ///< goes on, and keeps the error
    Fill,  ///< hands over a frame of NaN with the status "no data", and keeps the error
};

struct SSeriesOptions {
    std::optional<CFrameNumbers> frames = {};  ///< none: all. Of a source that is not numbered: rising numbers
    unsigned threads = 0;                      ///< 0: as many as the machine runs at once
    EOnFault onFault = EOnFault::Stop;
    bool mergePresets = false;  ///< consecutive frames up to the one whose preset was there already make one
    std::stop_token stop = {};  ///< asked for: the series ends between two frames with `Interrupted`
    /// Called on the caller's thread after each frame that was handed over.
    std::function<void(u64 done, std::optional<u64> total)> progress = {};
};

/// Many frames on many threads, handed over in order, in memory that is bounded by the number of threads.
///
///     CSeries series(measurement, {.frames = chosen});
///     for (const CFrame& frame : series) …
///
/// Threads are started by the run and end with it, also when the loop is left early.
class OVIX_MEASURE_API CSeries {
  public:
    CSeries(const CMeasurement& measurement, SSeriesOptions options = {});
    ~CSeries();
    CSeries(const CSeries&) = delete;
    CSeries& operator=(const CSeries&) = delete;

    /// Calls `map` on worker threads, each with a frame of its own, and `sink` on the caller's thread with the results
    /// in the order of the frames. What one of them throws ends the run and comes out here.
    template <class Map, class Sink>
    void Run(const Map& map, const Sink& sink);

    /// The frames themselves, in order: an input range, for one pass.
    class CIterator;
    CIterator begin();
    std::default_sentinel_t end() const { return {}; }

    u64 Done() const;
    /// The errors of frames that were skipped or filled, the first thousand of them, and how many there were.
    const std::vector<CError>& Faults() const;
    u64 FaultCount() const;

  private:
    struct SBody;
    std::unique_ptr<SBody> body_;
};

}  // namespace ovix::measure
