#pragma once

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstddef>
#include <optional>

namespace ovix::app {

/// The columns of the terminal that the standard output goes to; nothing where it is none.
inline std::optional<std::size_t> TerminalWidth() {
    winsize size = {};
    if (!::isatty(STDOUT_FILENO) || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || !size.ws_col) return {};
    return size.ws_col;
}

}  // namespace ovix::app
