#include "measure/recordings/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "measure/sources/input_file.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// A rename that never replaces, also on file systems that cannot do it in one step.
int RenameToFree(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    return ::link(from, to) == 0 ? ::unlink(from) : -1;
}

std::filesystem::path ShownName(const std::filesystem::path& target) { return target.string() + ".part"; }

std::filesystem::path HiddenName(const std::filesystem::path& target) {
    static std::atomic<unsigned> counter = 0;
    return target.parent_path() / Say(".", target.filename().string(), ".", ::getpid(), "-", counter++, ".part");
}

/// The new name itself has to reach the medium. A file system that cannot say so is no failure.
void SyncDirectory(const std::filesystem::path& directory) {
    const CDescriptor handle(::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle >= 0) ::fsync(handle);
}

}  // namespace

COutputFile::COutputFile(std::filesystem::path target, bool overwrite, EPart part)
    : target_(std::move(target)), overwrite_(overwrite), keeps_(part == EPart::Kept) {
    struct stat found {};
    if (::stat(target_.c_str(), &found) == 0) {
        if (!S_ISREG(found.st_mode))
            throw CError({.id = EError::FileUnwritable,
                          .file = target_.string(),
                          .expected = "a regular file or none",
                          .found = S_ISDIR(found.st_mode) ? "a directory" : "something else"});
        if (!overwrite_)
            throw CError({.id = EError::FileExists, .file = target_.string(), .problem = "exists already"});
    }
    do {
        part_ = part == EPart::Hidden ? HiddenName(target_) : ShownName(target_);
        file_ = ::open(part_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (file_ < 0 && errno == EEXIST && part == EPart::Hidden);  // of a dead process that had this one's number
    if (file_ < 0) FailWith(part_);
}

COutputFile::~COutputFile() {
    if (file_ < 0) return;
    ::close(file_);
    if (!keeps_) ::unlink(part_.c_str());
}

void COutputFile::FailWith(const std::filesystem::path& part) const {
    if (errno == EEXIST)
        throw CError({.id = EError::FileExists,
                      .file = part.string(),
                      .problem = "exists already: what is being written, or never came to its end",
                      .advice = "repair it, or remove it"});
    Fail("cannot create it");
}

void COutputFile::Fail(const char* problem) const {
    throw CError({.id = EError::FileUnwritable, .file = target_.string(), .problem = problem, .systemError = errno});
}

void COutputFile::WriteAt(u64 offset, std::span<const u8> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(file_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = ENOSPC;
        if (written <= 0) Fail("cannot write");
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += static_cast<u64>(written);
        size_ = std::max(size_, offset);
    }
}

std::size_t COutputFile::ReadAt(u64 offset, std::span<u8> bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t read =
            ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) Fail("cannot read it back");
        if (read == 0) break;
        done += static_cast<std::size_t>(read);
    }
    return done;
}

void COutputFile::Show() {
    std::filesystem::path shown = ShownName(target_);
    if (RenameToFree(part_.c_str(), shown.c_str()) != 0) FailWith(shown);
    part_ = std::move(shown);
}

void COutputFile::SyncBytes() {
    if (::fsync(file_) != 0) Fail("cannot write");
}

void COutputFile::Sync() {
    SyncBytes();
    SyncDirectory(target_.parent_path());
}

void COutputFile::Commit() {
    SyncBytes();
    const int renamed =
        overwrite_ ? ::rename(part_.c_str(), target_.c_str()) : RenameToFree(part_.c_str(), target_.c_str());
    if (renamed != 0) Fail("cannot put it into its place");
    ::close(std::exchange(file_, -1));
    SyncDirectory(target_.parent_path());
}

COutputAsFile::~COutputAsFile() = default;

u32 COutputAsFile::Write(const void* data, u32 size) {
    output_.WriteAt(position_, {static_cast<const u8*>(data), size});
    position_ += size;
    return size;
}

u32 COutputAsFile::Read(void* data, u32 size) {
    const auto read = static_cast<u32>(output_.ReadAt(position_, {static_cast<u8*>(data), size}));
    position_ += read;
    return read;
}

bool COutputAsFile::Seek(i64 offset, int origin) {
    return CBytesFile::MoveTo(position_, output_.Size(), offset, origin);
}

bool COutputAsFile::Flush() {
    output_.Sync();
    return true;
}

}  // namespace ovix::measure
