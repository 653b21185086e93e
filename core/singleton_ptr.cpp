#include "core/singleton_ptr.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

namespace ovix::Private {

namespace {

struct SAtExit {
    void* object;
    int priority;
    void (*deleter)(void*);
};

/// Lives to the end of the process: objects may still register while others are being deleted.
struct SExitList {
    std::mutex mutex;
    std::vector<SAtExit> entries;
};
SExitList& ExitList() {
    static SExitList& list = *new SExitList;
    return list;
}

void DeleteAll() {
    SExitList& list = ExitList();
    for (;;) {
        SAtExit next;
        {
            const std::lock_guard lock(list.mutex);
            if (list.entries.empty()) return;
            const auto highest =
                std::max_element(list.entries.begin(), list.entries.end(),
                                 [](const SAtExit& a, const SAtExit& b) { return a.priority < b.priority; });
            next = *highest;
            list.entries.erase(highest);
        }
        next.deleter(next.object);
    }
}

}  // namespace

void DeleteAtExit(void* object, int priority, void (*deleter)(void*)) {
    SExitList& list = ExitList();
    static const int registered = std::atexit(DeleteAll);
    static_cast<void>(registered);
    const std::lock_guard lock(list.mutex);
    list.entries.push_back({object, priority, deleter});
}

void YieldThread() { std::this_thread::yield(); }

}  // namespace ovix::Private
