#include "core/process.h"

#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "core/exception.h"
#include "core/version.h"

namespace ovix {

namespace Private {

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

}  // namespace Private

void* Alloc(std::size_t size) { return std::malloc(size); }
void* Realloc(void* pointer, std::size_t size) { return std::realloc(pointer, size); }
void Free(void* pointer) { std::free(pointer); }

void DebugOutput(const wchar_t* text) {
    static const bool wanted = std::getenv("OVIX_DEBUG_OUTPUT") != nullptr;
    if (wanted) std::fputs(CString(text).GetUTF8(), stderr);
}

const char* Version() { return OVIX_VERSION_STRING; }

unsigned CurrentThreadId() { return static_cast<unsigned>(::syscall(SYS_gettid)); }

CException::CException(const CString& message, const CException* inner)
    : message_(message), inner_(inner ? MakeShared<CException>(*inner) : TSharedPtr<CException>()) {}
CException::CException(const CException&) = default;
CException& CException::operator=(const CException&) = default;
CException::~CException() = default;

const char* CException::what() const noexcept {
    try {
        return message_.GetUTF8();
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
}

void ThrowIndexOutOfBounds() { throw CException(L"Index out of bounds."); }

}  // namespace ovix
