#include "measure/series/series_engine.h"

#include <system_error>

namespace ovix::measure {

CSeriesEngine::CSeriesEngine(const CMeasurement& measurement, const SSeriesOptions& options, unsigned threads, u64 from,
                             Map map)
    : measurement_(measurement),
      map_(std::move(map)),
      feed_(measurement, options, from),
      onRequest_(options.stop, [this] { stop_.request_stop(); }),
      slots_(SlotsOf(threads)) {
    if (threads < 2) return;
    try {
        for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Work(); });
    } catch (const std::system_error& error) {
        if (!threads_.empty()) return;  // those that there are do the work
        throw CError(
            {.id = EError::SystemFailed, .problem = "cannot start a thread", .systemError = error.code().value()});
    }
}

CSeriesEngine::~CSeriesEngine() { Stop(); }

void CSeriesEngine::Stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    stop_.request_stop();  // of a worker that waits for bytes
    changed_.notify_all();
    threads_.clear();
}

SSlot* CSeriesEngine::Next() {
    if (threads_.empty()) {
        if (ended_ || stop_.stop_requested() || !TakePortion(slots_[0])) return nullptr;
        ++taken_;
        Measure(slots_[0], 0);
        return slots_.data();
    }
    const std::stop_callback wake(stop_.get_token(), [this] {
        const std::lock_guard lock(mutex_);
        changed_.notify_all();
    });
    std::unique_lock lock(mutex_);
    if (taken_) {
        slots_[Current()].ready = false;
        changed_.notify_all();
    }
    SSlot& slot = slots_[taken_ % slots_.size()];
    changed_.wait(lock, [&] { return slot.ready || (ended_ && fed_ == taken_) || stop_.stop_requested(); });
    if (!slot.ready || stop_.stop_requested()) return nullptr;
    ++taken_;
    return &slot;
}

void CSeriesEngine::Work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        const auto hasRoom = [&] { return fed_ < taken_ + slots_.size() && !slots_[fed_ % slots_.size()].ready; };
        changed_.wait(lock, [&] { return stopped_ || ended_ || (!feeding_ && hasRoom()); });
        if (stopped_ || ended_) return;
        const std::size_t number = fed_ % slots_.size();
        SSlot& slot = slots_[number];
        feeding_ = true;
        lock.unlock();
        const bool fed = TakePortion(slot);
        // The first good frame of a source that is not numbered chooses the unit for all.
        const bool alone = fed && !measurement_.Unit();
        if (alone) Measure(slot, number);
        lock.lock();
        feeding_ = false;
        ended_ = !fed || slot.thrown;
        fed_ += fed;
        changed_.notify_all();
        if (!fed) return;
        if (!alone) {
            lock.unlock();
            Measure(slot, number);
            lock.lock();
        }
        slot.ready = true;
        changed_.notify_all();
    }
}

/// False at the end. What ends the run is a portion of its own.
bool CSeriesEngine::TakePortion(SSlot& slot) {
    slot.fault = slot.thrown = nullptr;
    try {
        return feed_.Next(slot.portion, stop_.get_token());
    } catch (...) {
        slot.portion.measurable = false;
        slot.thrown = std::current_exception();
        return true;
    }
}

void CSeriesEngine::Measure(SSlot& slot, std::size_t number) const {
    SPortion& portion = slot.portion;
    if (slot.thrown || !portion.measurable) return;
    try {
        const std::span raws(portion.raws.data(), portion.count);
        if (raws.empty()) {
            measurement_.Measure(portion.number, slot.frame);
        } else if (portion.cycle) {
            measurement_.MeasureMerged(raws, slot.frame);
        } else {
            measurement_.Measure(raws.front(), slot.frame);
        }
    } catch (...) {
        slot.fault = std::current_exception();
        return;
    }
    try {
        if (map_) map_(slot.frame, number);
    } catch (...) {
        slot.thrown = std::current_exception();
    }
}

}  // namespace ovix::measure
