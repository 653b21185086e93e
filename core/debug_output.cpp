#include "core/debug_output.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "core/string.h"

namespace ovix {

void DebugOutput(const wchar_t* text) {
    static const bool wanted = std::getenv("OVIX_DEBUG_OUTPUT") != nullptr;
    if (wanted) std::fputs(CString(text).GetUTF8(), stderr);
}

unsigned CurrentThreadId() { return static_cast<unsigned>(::syscall(SYS_gettid)); }

}  // namespace ovix
