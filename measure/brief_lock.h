#pragma once

#include <atomic>
#include <thread>

namespace ovix::measure {

/// A lock around a few instructions that nobody waits for without end. Who forks while another thread holds it leaves
/// it held for ever in the child, so what it guards must be something that one can do without.
class CBriefLock {
  public:
    /// Runs the action, unless the lock stays held; answers whether it ran.
    template <class Action>
    bool Try(const Action& action) {
        constexpr int kTries = 10'000;
        int tries = 0;
        while (held_.test_and_set(std::memory_order_acquire)) {
            if (++tries == kTries) return false;
            std::this_thread::yield();
        }
        const SRelease release{held_};
        action();
        return true;
    }

  private:
    struct SRelease {
        std::atomic_flag& held;
        ~SRelease() { held.clear(std::memory_order_release); }
    };

    std::atomic_flag held_;
};

}  // namespace ovix::measure
