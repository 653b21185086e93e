#include "apps/ovix/text/console.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

// What a signal handler looks at.
std::atomic<bool> printing = false;
std::atomic<int> pendingSignal = 0;
char closing[512];
std::size_t closingSize = 0;

// Set once, before anything runs.
ESaid saidAtAll = ESaid::Messages;
EProgress shownProgress = EProgress::Terminal;

/// A text that cannot be written is dropped: there is nobody left to be told.
void PrintError(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

/// The same with its lines, for a terminal must obey nothing that stands in names, texts and data.
std::string PrintableLines(std::string_view text) {
    std::string shown;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        shown += Printable(text.substr(begin, end - begin));
        if (end < text.size()) shown += '\n';
        begin = end + 1;
    }
    return shown;
}

}  // namespace

void HoldStandardStreams() {
    // Each in the direction that it does not have: what is read or written there fails, but for the messages.
    constexpr int kModes[] = {O_WRONLY, O_RDONLY, O_WRONLY};
    for (int stream = 0; stream < 3; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", kModes[stream]);
    }
}

void SetSaid(ESaid said) { saidAtAll = said; }
void SetProgress(EProgress progress) { shownProgress = progress; }
bool SaysNotes() { return saidAtAll == ESaid::Notes; }

void Say(std::string_view line) {
    if (saidAtAll != ESaid::Errors) PrintError(fmt::format("ovix: {}\n", Printable(line)));
}

void SayError(std::string_view line) { PrintError(fmt::format("{}\n", line)); }

void Print(std::string_view text, std::optional<std::string_view> newClosing) {
    static const bool toTerminal = ::isatty(STDOUT_FILENO) != 0;
    const std::string shown = toTerminal ? PrintableLines(text) : std::string();
    if (toTerminal) text = shown;
    while (printing.exchange(true)) ::pause();  // a signal handler has closed the document: this is the end
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    const int failure = written && std::fflush(stdout) == 0 ? 0 : errno;
    if (newClosing) closingSize = newClosing->copy(closing, sizeof closing);
    printing = false;
    if (const int signal = pendingSignal.exchange(0)) ::raise(signal);
    if (failure) throw SystemFault(ExitFile, "standard output", "cannot write", failure);
}

bool CloseDocument(int signal) {
    if (printing.exchange(true)) return pendingSignal.exchange(signal) != 0;
    const ssize_t ignored = ::write(STDOUT_FILENO, closing, closingSize);
    static_cast<void>(ignored);  // there is nobody left to be told
    return true;
}

std::optional<std::size_t> TerminalWidth() {
    winsize size = {};
    if (!::isatty(STDOUT_FILENO) || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || !size.ws_col) return {};
    return size.ws_col;
}

void PrintJson(const Json& document) { Print(JsonText(document, 2) + '\n'); }

CProgress::CProgress(std::string doing, u64 total) : doing_(std::move(doing)), total_(total) {
    const bool hidden = shownProgress == EProgress::Off || saidAtAll == ESaid::Errors ||
                        (shownProgress == EProgress::Terminal && !::isatty(STDERR_FILENO));
    next_ = hidden ? Clock::time_point::max() : begin_ + std::chrono::seconds(shownProgress == EProgress::Terminal);
}

CProgress::~CProgress() { Hide(); }

void CProgress::Show(u64 done) {
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    const bool knowsEnd = total_ && rate > 0 && done <= total_;
    const double left = knowsEnd ? static_cast<double>(total_ - done) / rate : 0;
    if (shownProgress == EProgress::Objects) {
        return PrintError(JsonText({{"progress",
                                     {{"doing", doing_},
                                      {"done", done},
                                      {"total", total_ ? Json(total_) : Json()},
                                      {"perSecond", rate},
                                      {"secondsLeft", knowsEnd ? Json(left) : Json()}}}}) +
                          '\n');
    }
    std::string line = fmt::format("{} {}", doing_, done);
    if (total_) line += fmt::format(" of {}", total_);
    line += fmt::format(", {:.3g}/s", rate);
    if (knowsEnd) line += fmt::format(", {:.0f} s left", left);
    PrintError("\r\033[K" + line);
    shown_ = true;
}

void CProgress::Hide() {
    if (shown_) PrintError("\r\033[K");
    shown_ = false;
}

}  // namespace ovix::app
