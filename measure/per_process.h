#pragma once

#include <unistd.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace ovix::measure {

/// A state under a lock, one for each process: a forked child begins with a new one, since a thread that it does not
/// have may have held the parent's, and left it half changed.
template <class State>
class TPerProcess {
  public:
    TPerProcess() = default;
    TPerProcess(const TPerProcess&) = delete;
    TPerProcess& operator=(const TPerProcess&) = delete;
    ~TPerProcess() {
        const SOurs* ours = ours_.load();
        if (ours->process == ::getpid()) delete ours;
    }

    template <class Action>
    auto With(const Action& action) const {
        SOurs& ours = Ours();
        const std::lock_guard lock(ours.mutex);
        return action(ours.state);
    }

  private:
    struct SOurs {
        pid_t process = ::getpid();
        std::mutex mutex = {};
        State state = {};
    };

    SOurs& Ours() const {
        SOurs* ours = ours_.load(std::memory_order_acquire);
        while (ours->process != ::getpid()) {
            auto fresh = std::make_unique<SOurs>();
            // The parent's stays where it is: a mutex that is held cannot be destroyed.
            if (ours_.compare_exchange_strong(ours, fresh.get(), std::memory_order_acq_rel)) ours = fresh.release();
        }
        return *ours;
    }

    mutable std::atomic<SOurs*> ours_ = new SOurs;
};

}  // namespace ovix::measure
