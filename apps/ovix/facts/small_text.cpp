#include "apps/ovix/facts/small_text.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "apps/ovix/fault.h"

namespace ovix::app {

std::string ReadSmallText(const std::string& path, const char* expected) {
    constexpr std::size_t kMostBytes = std::size_t{16} << 20;
    const std::string name = path == "-" ? "standard input" : path;
    const int file = path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw SystemFault(ExitFile, name, "cannot open", errno);
    const auto close = [](const int* descriptor) { ::close(*descriptor); };
    const std::unique_ptr<const int, decltype(close)> closes(&file, close);

    std::string text;
    char block[std::size_t{64} << 10];
    for (;;) {
        const ssize_t read = ::read(file, block, sizeof block);
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw SystemFault(ExitFile, name, "cannot read", errno);
        if (read == 0) return text;
        text.append(block, static_cast<std::size_t>(read));
        if (text.size() > kMostBytes) throw CFault({.file = name, .expected = expected, .found = "more than 16 MiB"});
    }
}

}  // namespace ovix::app
