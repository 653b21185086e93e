#include "apps/ovix/output/interrupt_cleanup.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace {

/// The names to be removed after an interrupt. A signal handler may only touch what needs no lock and no heap, so they
/// stand in plain memory.
struct SUnfinished {
    std::atomic<bool> used{false};
    char path[4096];
};
SUnfinished unfinished[32];
pid_t owner = 0;

int Register(const std::string& path) {
    for (int i = 0; i < static_cast<int>(std::size(unfinished)); ++i) {
        SUnfinished& slot = unfinished[i];
        if (slot.used || path.size() >= sizeof slot.path) continue;
        std::memcpy(slot.path, path.c_str(), path.size() + 1);
        slot.used = true;
        return i;
    }
    return -1;
}

void Unregister(int& slot) {
    if (slot >= 0) unfinished[slot].used = false;
    slot = -1;
}

/// A file, or a folder with what is in it. `readdir` would take memory, so the folder's entries are asked for as the
/// system gives them.
void RemoveAll(int folder, const char* name) {
    if (::unlinkat(folder, name, 0) == 0 || errno != EISDIR) return;
    const int inner = ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    alignas(dirent64) char entries[4096];
    for (ssize_t size; inner >= 0 && (size = ::getdents64(inner, entries, sizeof entries)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries + at);
            at += entry->d_reclen;
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                RemoveAll(inner, entry->d_name);
        }
    }
    ::close(inner);
    ::unlinkat(folder, name, AT_REMOVEDIR);
}

extern "C" void EndInterrupted(int signal) {
    // What is being printed is printed to its end first; `Print` comes back here.
    if (::getpid() == owner && signal != SIGPIPE && !CloseDocument(signal)) return;
    if (::getpid() == owner) {  // a child that only decodes owns none of the files
        for (SUnfinished& slot : unfinished) {
            if (slot.used) RemoveAll(AT_FDCWD, slot.path);
        }
    }
    // As if nobody had handled it, so that a shell's loop ends too; it comes when this returns.
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

}  // namespace

CRemovedOnInterrupt::CRemovedOnInterrupt(const std::filesystem::path& file) : slot_(Register(file.string())) {}
CRemovedOnInterrupt::~CRemovedOnInterrupt() { Unregister(slot_); }

void InstallInterruptCleanup() {
    owner = ::getpid();
    struct sigaction action = {};
    action.sa_handler = EndInterrupted;
    sigfillset(&action.sa_mask);
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        struct sigaction inherited;
        // What the caller has us ignore, as `nohup` does, stays ignored.
        if (::sigaction(signal, nullptr, &inherited) == 0 && inherited.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace ovix::app
