#include "apps/ovix/output/output_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/spool.h"
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

std::string NameBeside(const std::filesystem::path& target) {
    static std::atomic<unsigned> counter = 0;
    const std::string name = fmt::format(".{}.{}-{}.part", target.filename().string(), ::getpid(), counter++);
    return (target.parent_path() / name).string();
}

/// A rename that never replaces, also on file systems that cannot do it in one step.
int RenameToFree(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    return ::link(from, to) == 0 ? ::unlink(from) : -1;
}

/// The new name itself has to reach the medium. A file system that cannot say so is no failure.
void SyncDirectory(const std::filesystem::path& directory) {
    const int handle = ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    ::fsync(handle);
    ::close(handle);
}

}  // namespace

COutputFile::COutputFile(std::filesystem::path target, bool overwrite, bool keepPart)
    : target_(std::move(target)), overwrite_(overwrite), keepPart_(keepPart) {
    if (IsPrinted()) {
        file_ = OpenNamelessFile();
        return;
    }
    struct stat found;
    if (::stat(target_.c_str(), &found) == 0) {
        if (!S_ISREG(found.st_mode)) {
            throw CFault({.exit = ExitFile, .file = target_.string(), .expected = "a regular file or none"});
        }
        if (!overwrite_) {
            throw CFault(
                {.exit = ExitFile, .file = target_.string(), .problem = "exists already; --overwrite replaces it"});
        }
    }
    OpenPart();
}

void COutputFile::OpenPart() {
    temporary_ = keepPart_ ? target_.string() + ".part" : NameBeside(target_);
    if (!keepPart_) slot_ = Register(temporary_);
    file_ = ::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file_ >= 0) return;
    Unregister(slot_);
    if (keepPart_ && errno == EEXIST) {
        throw CFault({.exit = ExitFile,
                      .file = temporary_,
                      .problem = "exists already: what was written earlier and never came to its end"});
    }
    Fail("create it");
}

COutputFile::~COutputFile() {
    if (file_ >= 0) {
        ::close(file_);
        if (!keepPart_ && !IsPrinted()) ::unlink(temporary_.c_str());
    }
    Unregister(slot_);
}

void COutputFile::Fail(const char* doing) {
    throw SystemFault(ExitFile, target_.string(), std::string("cannot ") + doing, errno);
}

void COutputFile::Write(const void* data, u64 size) { WriteAt(size_, data, size); }

void COutputFile::WriteAt(u64 offset, const void* data, u64 size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = ::pwrite(file_, next, size, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = ENOSPC;
        if (written <= 0) Fail("write");
        next += written;
        offset += static_cast<u64>(written);
        size -= static_cast<u64>(written);
        size_ = std::max(size_, offset);
    }
}

u64 COutputFile::ReadAt(u64 offset, void* data, u64 size) {
    u64 done = 0;
    while (done < size) {
        const ssize_t read =
            ::pread(file_, static_cast<char*>(data) + done, size - done, static_cast<off_t>(offset + done));
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) Fail("read back");
        if (read == 0) break;
        done += static_cast<u64>(read);
    }
    return done;
}

void COutputFile::Sync() {
    if (::fsync(file_) != 0) Fail("write");
}

void COutputFile::Commit() {
    if (IsPrinted()) return PrintFile(file_, "standard output");
    Sync();
    const int renamed =
        overwrite_ ? ::rename(temporary_.c_str(), target_.c_str()) : RenameToFree(temporary_.c_str(), target_.c_str());
    if (renamed != 0) Fail("put it into its place");
    Unregister(slot_);
    ::close(file_);
    file_ = -1;
    SyncDirectory(target_.parent_path());
}

void SyncByName(const std::filesystem::path& path, int (*sync)(int)) {
    const int handle = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const int failed = handle < 0 || sync(handle) != 0 ? errno : 0;
    ::close(handle);
    if (failed) throw SystemFault(ExitFile, path.string(), "cannot write", failed);
}

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
