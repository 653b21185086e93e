#pragma once

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/core.h"

namespace ovix::measure {

/// Threads for `wanted`: 0 stands for as many as the machine runs at once.
inline unsigned ThreadsOf(unsigned wanted) {
    return wanted ? wanted : std::max(1u, std::thread::hardware_concurrency());
}

/// Work on a row of items side by side, with results in their order.
///
/// `next(stop)` gives the items, one call at a time and in order, and nothing at the end; a token for whose stop it may
/// have to wait is there for it to watch. `make(item)` runs on `threads` threads at once, `take(result)` on the
/// caller's. No more than two items a thread are on their way, so memory does not grow with their number. What one of
/// the three throws for the first item ends it all and reaches the caller.
template <class Next, class Make, class Take>
void InOrder(unsigned threads, Next next, const Make& make, const Take& take) {
    using Item = typename std::invoke_result_t<Next&, const std::stop_token&>::value_type;
    using Result = std::invoke_result_t<const Make&, Item>;
    struct SMade {
        std::optional<Result> result;
        std::exception_ptr failure;
    };
    const u64 window = u64{2} * threads;
    std::mutex mutex;
    std::condition_variable room, ready;
    std::stop_source stop;
    std::vector<std::optional<SMade>> slots(window);  // item n waits in slot n modulo their number
    u64 fed = 0, taken = 0;
    bool feeding = false, ended = false;

    const auto work = [&] {
        std::unique_lock lock(mutex);
        for (;;) {
            room.wait(lock, [&] { return ended || (!feeding && fed < taken + window); });
            if (ended) return;
            feeding = true;
            lock.unlock();
            SMade made;
            std::optional<Item> item;
            try {
                item = next(stop.get_token());
            } catch (...) {
                made.failure = std::current_exception();
            }
            lock.lock();
            feeding = false;
            ended = ended || !item;
            const u64 number = fed;
            fed += item || made.failure;
            room.notify_all();
            ready.notify_one();
            if (!item && !made.failure) return;
            if (item) {
                lock.unlock();
                try {
                    made.result.emplace(make(*std::move(item)));
                } catch (...) {
                    made.failure = std::current_exception();
                }
                lock.lock();
            }
            slots[number % window] = std::move(made);
            ready.notify_one();
        }
    };
    std::vector<std::jthread> workers;
    /// Whatever happens, no thread begins another item, and all are joined.
    struct SEnd {
        ~SEnd() {
            stop.request_stop();
            const std::lock_guard lock(mutex);
            ended = true;
            room.notify_all();
        }
        std::mutex& mutex;
        std::condition_variable& room;
        std::stop_source& stop;
        bool& ended;
    };
    const SEnd end{mutex, room, stop, ended};
    for (unsigned i = 0; i < threads; ++i) workers.emplace_back(work);
    for (;;) {
        std::unique_lock lock(mutex);
        std::optional<SMade>& slot = slots[taken % window];
        ready.wait(lock, [&] { return slot.has_value() || (ended && fed == taken); });
        if (!slot) return;
        SMade made = std::move(*slot);
        slot.reset();
        ++taken;
        room.notify_all();
        lock.unlock();
        if (made.failure) std::rethrow_exception(made.failure);
        take(*std::move(made.result));
    }
}

/// The numbers from 0 to `count` - 1, for `InOrder`.
inline auto Numbers(u64 count) {
    return [count, number = u64{0}](const std::stop_token&) mutable {
        return number < count ? std::optional(number++) : std::nullopt;
    };
}

}  // namespace ovix::measure
