#include "apps/ovix/spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "apps/ovix/fault.h"

namespace ovix::app {

CSpool::CSpool(const std::string& file) : name_(file == "-" ? "standard input" : file) {
    const std::string directory = std::filesystem::temp_directory_path();
    spool_ = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (spool_ < 0) throw SystemFault(ExitFile, directory, "cannot make a temporary file", errno);
    const int from = file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    try {
        if (from < 0) throw SystemFault(ExitFile, name_, "cannot open", errno);
        Copy(from);
    } catch (...) {
        if (from > STDERR_FILENO) ::close(from);
        ::close(spool_);
        throw;
    }
    if (from > STDERR_FILENO) ::close(from);
}

CSpool::~CSpool() { ::close(spool_); }

void CSpool::Copy(int from) {
    std::vector<char> block(std::size_t{1} << 20);
    for (;;) {
        const ssize_t read = ::read(from, block.data(), block.size());
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw SystemFault(ExitFile, name_, "cannot read", errno);
        if (read == 0) return;
        for (ssize_t written = 0; written < read;) {
            const ssize_t moved = ::write(spool_, block.data() + written, static_cast<std::size_t>(read - written));
            if (moved < 0 && errno != EINTR)
                throw SystemFault(ExitFile, std::filesystem::temp_directory_path(), "cannot write a temporary file",
                                  errno);
            if (moved > 0) written += moved;
        }
    }
}

}  // namespace ovix::app
