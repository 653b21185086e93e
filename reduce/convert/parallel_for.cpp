#include "reduce/convert/parallel_for.h"

#ifdef OVIX_PARALLEL_TBB
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <unistd.h>

#include <atomic>
#endif

namespace ovix::reduce::detail {

#ifdef OVIX_PARALLEL_TBB
namespace {

/// A forked child has the scheduler's state and none of its threads: it would wait for them for ever.
bool HasThreads() {
    static std::atomic<pid_t> first{0};
    pid_t owner = 0;
    const pid_t self = getpid();
    return first.compare_exchange_strong(owner, self) || owner == self;
}

}  // namespace
#endif

void ParallelFor(u32 count, void (*part)(const void* body, u32 first, u32 last), const void* body) {
    if (count == 0) return;
#ifdef OVIX_PARALLEL_TBB
    if (count > 1 && HasThreads()) {
        tbb::parallel_for(tbb::blocked_range<u32>(0, count),
                          [=](const tbb::blocked_range<u32>& range) { part(body, range.begin(), range.end()); });
        return;
    }
#endif
    part(body, 0, count);
}

}  // namespace ovix::reduce::detail
