#pragma once

#include "core/types.h"

namespace ovix::reduce {

namespace detail {

void ParallelFor(u32 count, void (*part)(const void* body, u32 first, u32 last), const void* body);

}  // namespace detail

/// The numbers from 0 to `count` over the processors: calls `body(first, last)` for parts that together are all of
/// them, cut by the scheduler, and comes back when all are done. Below 2 there is nothing to share: the caller's thread
/// does it. `body` touches only what belongs to its numbers and raises nothing; the result is that of one thread.
///
/// A child that was forked off a process that has worked here before does everything on the caller's thread, and so
/// does a library built with `-DOVIX_PARALLEL=serial`. No setting of the scheduler is changed.
template <class Body>
void ParallelFor(u32 count, const Body& body) {
    detail::ParallelFor(
        count, [](const void* self, u32 first, u32 last) { (*static_cast<const Body*>(self))(first, last); }, &body);
}

}  // namespace ovix::reduce
