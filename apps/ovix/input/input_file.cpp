#include "apps/ovix/input/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>
#include <vector>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

CFault Unreadable(const std::string& name, std::string problem) {
    return CFault({.exit = ExitFile, .file = name, .problem = std::move(problem)});
}

int OpenForReading(const std::string& name) {
    if (name == "-") return ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    return ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
}

}  // namespace

CInputFile::CInputFile(std::string name) : name_(std::move(name)), file_(OpenForReading(name_)) {
    if (name_ == "-") name_ = "standard input";
    if (file_ < 0) throw SystemFault(ExitFile, name_, "cannot open", errno);
    struct stat facts {};
    if (::fstat(file_, &facts) != 0) throw SystemFault(ExitFile, name_, "cannot open", errno);
    if (S_ISREG(facts.st_mode)) {
        size_ = static_cast<u64>(facts.st_size);
    } else if (S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode)) {
        CopyToTemporary();
    } else {
        throw Unreadable(name_, S_ISDIR(facts.st_mode) ? "is a directory" : "is neither a file nor a pipe");
    }
}

CInputFile::CDescriptor::~CDescriptor() {
    if (number_ >= 0) ::close(number_);
}

std::size_t CInputFile::ReadAt(u64 offset, std::span<u8> bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t moved =
            ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        if (moved == 0) break;
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (errno != EINTR) {
            throw SystemFault(ExitFile, name_, "cannot read", errno);
        }
    }
    return done;
}

void CInputFile::CopyToTemporary() {
    const std::string directory = std::filesystem::temp_directory_path();
    CDescriptor pipe(::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    pipe.Swap(file_);
    if (file_ < 0) throw SystemFault(ExitFile, directory, "cannot make a temporary file", errno);
    std::vector<u8> block(std::size_t{1} << 20);
    for (;;) {
        const ssize_t read = ::read(pipe, block.data(), block.size());
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw SystemFault(ExitFile, name_, "cannot read", errno);
        if (read == 0) break;
        for (ssize_t written = 0; written < read;) {
            const ssize_t moved = ::write(file_, block.data() + written, static_cast<std::size_t>(read - written));
            if (moved < 0 && errno != EINTR)
                throw SystemFault(ExitFile, directory, "cannot write a temporary file", errno);
            if (moved > 0) written += moved;
        }
        size_ += static_cast<u64>(read);
    }
}

}  // namespace ovix::app
