#include "apps/ovix/cli/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

std::string Dump(const Json& value, int indent) {
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void Say(std::string_view line) { fmt::print(stderr, "ovix: {}\n", line); }

void Print(std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!written || std::fflush(stdout) != 0) throw SystemFault(ExitFile, "standard output", "cannot write", errno);
}

void PrintJson(const Json& document) { Print(Dump(document, 2) + '\n'); }

std::string JsonLine(const Json& value) { return Dump(value, -1); }

CProgress::CProgress(std::string doing, u64 total)
    : doing_(std::move(doing)), total_(total), terminal_(::isatty(STDERR_FILENO) != 0) {}

CProgress::~CProgress() { Hide(); }

void CProgress::Show(u64 done) {
    if (!terminal_ || Clock::now() < next_) return;
    next_ = Clock::now() + std::chrono::milliseconds(200);
    fmt::print(stderr, "\r\033[K{} {} of {}", doing_, done, total_);
    std::fflush(stderr);
    shown_ = true;
}

void CProgress::Hide() {
    if (shown_) fmt::print(stderr, "\r\033[K");
    shown_ = false;
}

}  // namespace ovix::app
