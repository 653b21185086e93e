#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "apps/ovix/json.h"
#include "core/core.h"

namespace ovix::app {

/// Puts nothing in the place of each standard stream that the caller closed: a file opened later must not take it, or
/// messages would go into that file. For `main`, once.
void HoldStandardStreams();

/// One line on the standard error, with the tool's name before it.
void Say(std::string_view line);

/// Data on the standard output. Throws `CFault` when it cannot be written; what is written is handed over at once.
void Print(std::string_view text);

/// A whole document on the standard output, indented.
void PrintJson(const Json& document);

/// How far a long piece of work has come, in one line of the standard error that is written over: only on a terminal,
/// and only when the work takes longer than a second.
class CProgress {
  public:
    CProgress(std::string doing, u64 total);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void Show(u64 done);
    /// Clears the line, so that a message can be written.
    void Hide();

  private:
    using Clock = std::chrono::steady_clock;

    std::string doing_;
    u64 total_;
    bool terminal_;
    bool shown_ = false;
    Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

}  // namespace ovix::app
