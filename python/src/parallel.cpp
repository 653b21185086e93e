#include <atomic>
#include <exception>
#include <future>
#include <mutex>
#include <thread>

#include "python/src/binding.h"

namespace ovix::python {

void CSignals::Check() {
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(50);
    const py::gil_scoped_acquire lock;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

unsigned WorkersFor(u64 count, unsigned threads) {
    const unsigned wanted = threads ? threads : std::max(1u, std::thread::hardware_concurrency());
    return static_cast<unsigned>(std::clamp<u64>(count, 1, wanted));
}

namespace {

/// The next number to be done, and the error of the smallest one that failed.
struct SWork {
    u64 count;
    const std::function<void(u64, unsigned)>& action;
    std::atomic<u64> next = 0;
    std::mutex mutex = {};
    u64 failed = std::numeric_limits<u64>::max();
    std::exception_ptr error = {};

    template <class Between>
    void Do(unsigned worker, const Between& between) {
        u64 i = 0;
        try {
            for (i = next++; i < count; i = next++) {
                action(i, worker);
                between();
            }
        } catch (...) {
            next = count;  // the others finish what they have begun, all of which is before it
            const std::lock_guard lock(mutex);
            if (!error || i < failed) error = std::current_exception();
            failed = std::min(failed, i);
        }
    }
};

}  // namespace

void InParallel(u64 count, unsigned threads, const std::function<void(u64, unsigned)>& action) {
    const py::gil_scoped_release unlocked;
    SWork work{count, action};
    {
        std::vector<std::jthread> helpers;
        for (unsigned worker = 1; worker < WorkersFor(count, threads); ++worker)
            helpers.emplace_back([&work, worker] { work.Do(worker, [] {}); });
        CSignals signals;
        work.Do(0, [&] { signals.Check(); });
    }
    if (work.error) std::rethrow_exception(work.error);
}

void Interruptibly(std::stop_source& stop, const std::function<void()>& action) {
    const py::gil_scoped_release unlocked;
    std::future<void> done = std::async(std::launch::async, action);
    CSignals signals;
    while (done.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) {
        try {
            signals.Check();
        } catch (...) {
            stop.request_stop();
            done.wait();
            throw;
        }
    }
    done.get();
}

}  // namespace ovix::python
