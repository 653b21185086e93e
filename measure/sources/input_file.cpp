#include "measure/sources/input_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace ovix::measure {

namespace {

constexpr const char* kStandardInput = "standard input";

[[noreturn]] void Fail(const std::string& name, const char* problem, int number) {
    throw CError({.id = number == ENOENT || number == ENOTDIR ? EError::FileMissing : EError::FileUnreadable,
                  .file = name,
                  .problem = problem,
                  .systemError = number});
}

int OpenedForReading(const char* path, bool waits) {
    const int file = ::open(path, O_RDONLY | O_CLOEXEC | (waits ? 0 : O_NONBLOCK));
    if (file >= 0 && !waits) ::fcntl(file, F_SETFL, 0);
    return file;
}

SFileIdentity IdentityIn(const struct stat& facts) { return {facts.st_dev, facts.st_ino}; }

}  // namespace

CDescriptor::~CDescriptor() {
    if (number_ >= 0) ::close(number_);
}

std::optional<SFileIdentity> IdentityOf(const std::filesystem::path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0) return {};
    return IdentityIn(facts);
}

CInputFile::CInputFile(const std::filesystem::path& path, bool waits)
    : name_(path == "-" ? kStandardInput : path.string()),
      file_(path == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0) : OpenedForReading(path.c_str(), waits)) {
    Inspect();
}

CInputFile::CInputFile(int descriptor, std::string name)
    : name_(std::move(name)), file_(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0)) {
    Inspect();
}

CInputFile::CInputFile(std::span<const u8> bytes, std::string name)
    : name_(std::move(name)), file_(::memfd_create("ovix", MFD_CLOEXEC)) {
    while (file_ >= 0 && !bytes.empty()) {
        const ssize_t moved = ::write(file_, bytes.data(), bytes.size());
        if (moved < 0 && errno != EINTR) Fail(name_, "cannot be kept in memory", errno);
        if (moved > 0) bytes = bytes.subspan(static_cast<std::size_t>(moved));
    }
    Inspect();
}

void CInputFile::Inspect() {
    if (file_ < 0) Fail(name_, "cannot open", errno);
    const struct stat facts = Facts();
    identity_ = IdentityIn(facts);
    regular_ = S_ISREG(facts.st_mode);
    if (regular_) {
        size_ = static_cast<u64>(facts.st_size);
    } else if (!S_ISFIFO(facts.st_mode) && !S_ISSOCK(facts.st_mode)) {
        Fail(name_, S_ISDIR(facts.st_mode) ? "is a directory" : "is neither a file nor a pipe", 0);
    }
}

struct stat CInputFile::Facts() const {
    struct stat facts {};
    if (::fstat(file_, &facts) != 0) Fail(name_, "cannot read", errno);
    return facts;
}

u64 CInputFile::SizeNow() const { return static_cast<u64>(Facts().st_size); }

std::size_t CInputFile::ReadAt(u64 offset, std::span<u8> bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t moved =
            ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        if (moved == 0) break;
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (errno != EINTR) {
            Fail(name_, "cannot read", errno);
        }
    }
    return done;
}

bool CInputFile::AwaitNext(std::chrono::milliseconds atMost) const {
    pollfd wait{file_, POLLIN, 0};
    return ::poll(&wait, 1, static_cast<int>(atMost.count())) > 0;
}

std::size_t CInputFile::ReadNext(std::span<u8> bytes) const {
    for (;;) {
        const ssize_t moved = ::read(file_, bytes.data(), bytes.size());
        if (moved >= 0) return static_cast<std::size_t>(moved);
        if (errno == EAGAIN) {  // a descriptor that somebody else set not to wait
            pollfd wait{file_, POLLIN, 0};
            ::poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            Fail(name_, "cannot read", errno);
        }
    }
}

}  // namespace ovix::measure
