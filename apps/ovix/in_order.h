#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/core.h"

namespace ovix::app {

/// Makes the things 0 to `count` - 1 on `jobs` threads of its own and hands them to `take` in order, on the caller's
/// thread. `make(number)` runs on several threads at a time. No more than two things a thread wait to be taken, so
/// memory does not grow with their number. What `make` or `take` throws for the first of them ends it all and reaches
/// the caller.
template <class Make, class Take>
void MakeInOrder(u64 count, unsigned jobs, const Make& make, const Take& take) {
    using Thing = std::invoke_result_t<Make, u64>;
    struct SMade {
        std::optional<Thing> thing;
        std::exception_ptr failure;
    };
    const u64 window = u64{2} * jobs;
    std::mutex mutex;
    std::condition_variable room, ready;
    std::vector<std::optional<SMade>> slots(window);  // thing n waits in slot n modulo their number
    u64 next = 0, taken = 0;

    const auto work = [&] {
        std::unique_lock lock(mutex);
        for (;;) {
            room.wait(lock, [&] { return next >= count || next < taken + window; });
            if (next >= count) return;
            const u64 number = next++;
            lock.unlock();
            SMade made;
            try {
                made.thing.emplace(make(number));
            } catch (...) {
                made.failure = std::current_exception();
            }
            lock.lock();
            slots[number % window] = std::move(made);
            ready.notify_one();
        }
    };
    std::vector<std::jthread> threads;
    /// Whatever happens, no thread begins another thing, and all are joined.
    struct SEnd {
        ~SEnd() {
            const std::lock_guard lock(mutex);
            next = count;
            room.notify_all();
        }
        std::mutex& mutex;
        std::condition_variable& room;
        u64& next;
        u64 count;
    };
    const SEnd end{mutex, room, next, count};
    for (unsigned i = 0; i < jobs; ++i) threads.emplace_back(work);
    for (u64 number = 0; number < count; ++number) {
        std::unique_lock lock(mutex);
        std::optional<SMade>& slot = slots[number % window];
        ready.wait(lock, [&] { return slot.has_value(); });
        SMade made = std::move(*slot);
        slot.reset();
        ++taken;
        room.notify_one();
        lock.unlock();
        if (made.failure) std::rethrow_exception(made.failure);
        take(number, *std::move(made.thing));
    }
}

}  // namespace ovix::app
