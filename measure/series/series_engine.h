#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "measure/series/frame_feed.h"

namespace ovix::measure {

/// A portion on its way, and what came of it.
struct SSlot {
    SPortion portion;
    CFrame frame;
    std::exception_ptr fault;   ///< of the measuring
    std::exception_ptr thrown;  ///< by the caller's function, or what ends the run
    bool ready = false;
};

/// Workers that take portions from a feed, measure them side by side, and leave them in order: portion n stands in slot
/// n modulo the slots, which is free again when it was taken. Its threads end with it.
class CSeriesEngine {
  public:
    using Map = std::function<void(const CFrame& frame, std::size_t slot)>;

    /// With one thread everything happens in `Next`.
    CSeriesEngine(const CMeasurement& measurement, const SSeriesOptions& options, unsigned threads, u64 from, Map map);
    CSeriesEngine(const CSeriesEngine&) = delete;
    CSeriesEngine& operator=(const CSeriesEngine&) = delete;
    ~CSeriesEngine();

    static std::size_t SlotsOf(unsigned threads) { return threads > 1 ? std::size_t{2} * threads : 1; }

    /// Frees the slot of before and waits for the next, in order; null at the end, and when the stop was asked for.
    SSlot* Next();
    /// Of the slot that `Next` answered.
    std::size_t Current() const { return (taken_ - 1) % slots_.size(); }

  private:
    void Work();
    bool Feed(std::unique_lock<std::mutex>& lock, SSlot& slot);
    bool TakePortion(SSlot& slot);
    void Measure(SSlot& slot, std::size_t number) const;
    void Stop();

    const CMeasurement& measurement_;
    Map map_;
    CFrameFeed feed_;
    std::stop_source stop_;  ///< of the caller, or because the run is over
    std::stop_callback<std::function<void()>> onRequest_;
    std::vector<SSlot> slots_;
    u64 taken_ = 0;  ///< portions that went to the caller

    std::mutex mutex_;
    std::condition_variable changed_;
    // Under the mutex, as `taken_` and `ready` of slots are.
    u64 fed_ = 0;           ///< portions that were taken from the feed
    bool feeding_ = false;  ///< a thread is at the feed
    bool ended_ = false;    ///< nothing more comes from the feed
    bool stopped_ = false;
    std::vector<std::jthread> threads_;
};

}  // namespace ovix::measure
