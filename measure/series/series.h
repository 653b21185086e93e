#pragma once

#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>
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
    /// None: all. Of a source that is not numbered: rising numbers, of which those behind its end are passed over.
    std::optional<CFrameNumbers> frames = {};
    unsigned threads = 0;  ///< 0: as many as the machine runs at once; 1: the caller's alone
    EOnFault onFault = EOnFault::Stop;
    /// Consecutive frames up to the one whose preset was there already make one. A frame whose preset is not known is
    /// left out of its cycle, one that cannot be decoded costs the whole of it.
    bool mergePresets = false;
    std::stop_token stop = {};  ///< asked for: the series ends between two frames with `Interrupted`
    /// Called on the caller's thread after each frame that was handed over.
    std::function<void(u64 done, std::optional<u64> total)> progress = {};
};

/// Many frames on many threads, handed over in order, in memory that is bounded by the number of threads.
///
///     CSeries series(measurement, {.frames = chosen});
///     for (const CFrame& frame : series) …
///
/// Threads are started by the run and end with it, also when the loop is left early. Faults of frames are treated as
/// the options say; all other errors, and what the caller's functions throw, end the run and come out of it. A process
/// that is forked off in the middle goes on with the frame behind, on threads of its own; but the frames of a source
/// that is not numbered stay with the parent, and the child's run ends with `Interrupted`.
class OVIX_MEASURE_API CSeries {
  public:
    explicit CSeries(const CMeasurement& measurement, SSeriesOptions options = {});
    ~CSeries();
    CSeries(const CSeries&) = delete;
    CSeries& operator=(const CSeries&) = delete;

    /// Calls `map(frame)` on worker threads, several at once, and on the caller's thread, in the order of the frames,
    /// `sink(result)` with what came of it, or `sink(result, frame)`, whose frame holds until the sink returns.
    template <class Map, class Sink>
    void Run(const Map& map, const Sink& sink) {
        using Result = std::decay_t<std::invoke_result_t<const Map&, const CFrame&>>;
        std::vector<std::unique_ptr<Result>> results(Slots());
        const CRun run(*this, [&](const CFrame& frame, std::size_t slot) {
            results[slot] = std::make_unique<Result>(map(frame));
        });
        while (Advance()) {
            const std::unique_ptr<Result> result = std::move(results[CurrentSlot()]);
            if constexpr (std::is_invocable_v<const Sink&, Result, CFrame&>)
                sink(std::move(*result), Current());
            else
                sink(std::move(*result));
        }
    }

    /// The frames themselves, in order: an input range, for one pass. A frame is valid until the next one; who keeps it
    /// moves it out.
    class CIterator;
    CIterator begin();
    std::default_sentinel_t end() const { return {}; }

    /// Frames that were handed over by the last run.
    u64 Done() const;
    /// The errors of frames that were skipped or filled, the first thousand of them, and how many there were.
    const std::vector<CError>& Faults() const;
    u64 FaultCount() const;

  private:
    using Map = std::function<void(const CFrame& frame, std::size_t slot)>;
    struct SBody;

    /// From the first frame to the end of its life, in which the threads are ended.
    class OVIX_MEASURE_API CRun {
      public:
        CRun(CSeries& series, Map map);
        CRun(CRun&& other) noexcept : series_(std::exchange(other.series_, nullptr)) {}
        CRun& operator=(CRun&& other) noexcept {
            std::swap(series_, other.series_);
            return *this;
        }
        ~CRun();

      private:
        CSeries* series_;
    };

    /// Frames that are in memory at once.
    std::size_t Slots() const;
    std::size_t CurrentSlot() const;
    CFrame& Current();
    /// To the next frame; false at the end.
    bool Advance();

    std::unique_ptr<SBody> body_;
};

class CSeries::CIterator {
  public:
    using iterator_concept = std::input_iterator_tag;
    using value_type = CFrame;
    using difference_type = std::ptrdiff_t;

    CFrame& operator*() const { return series_->Current(); }
    CFrame* operator->() const { return &series_->Current(); }
    CIterator& operator++() {
        if (!series_->Advance()) series_ = nullptr;
        return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const CIterator& iterator, std::default_sentinel_t) { return !iterator.series_; }

  private:
    friend class CSeries;
    explicit CIterator(CSeries& series) : run_(series, {}), series_(&series) { ++*this; }

    CRun run_;
    CSeries* series_;
};

inline CSeries::CIterator CSeries::begin() { return CIterator(*this); }

}  // namespace ovix::measure
