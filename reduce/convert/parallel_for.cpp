#include "reduce/convert/parallel_for.h"

#ifdef OVIX_PARALLEL_TBB
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#endif

namespace ovix::reduce::detail {

void ParallelFor(u32 count, void (*part)(const void* body, u32 first, u32 last), const void* body) {
    if (count == 0) return;
#ifdef OVIX_PARALLEL_TBB
    if (count > 1) {
        tbb::parallel_for(tbb::blocked_range<u32>(0, count),
                          [=](const tbb::blocked_range<u32>& range) { part(body, range.begin(), range.end()); });
        return;
    }
#endif
    part(body, 0, count);
}

}  // namespace ovix::reduce::detail
