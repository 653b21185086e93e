#include "apps/ovix/cli/console.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

/// A text that cannot be written is dropped: there is nobody left to be told.
void PrintError(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

}  // namespace

void HoldStandardStreams() {
    // Each in the direction that it does not have: what is read or written there fails, but for the messages.
    constexpr int kModes[] = {O_WRONLY, O_RDONLY, O_WRONLY};
    for (int stream = 0; stream < 3; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", kModes[stream]);
    }
}

void Say(std::string_view line) { PrintError(fmt::format("ovix: {}\n", line)); }

void Print(std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!written || std::fflush(stdout) != 0) throw SystemFault(ExitFile, "standard output", "cannot write", errno);
}

void PrintJson(const Json& document) { Print(JsonText(document, 2) + '\n'); }

CProgress::CProgress(std::string doing, u64 total)
    : doing_(std::move(doing)), total_(total), terminal_(::isatty(STDERR_FILENO) != 0) {}

CProgress::~CProgress() { Hide(); }

void CProgress::Show(u64 done) {
    if (!terminal_ || Clock::now() < next_) return;
    next_ = Clock::now() + std::chrono::milliseconds(200);
    PrintError(fmt::format("\r\033[K{} {} of {}", doing_, done, total_));
    shown_ = true;
}

void CProgress::Hide() {
    if (shown_) PrintError("\r\033[K");
    shown_ = false;
}

}  // namespace ovix::app
