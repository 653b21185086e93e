#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "apps/ovix/json.h"
#include "core/core.h"

namespace ovix::app {

/// Puts nothing in the place of each standard stream that the caller closed: a file opened later must not take it, or
/// messages would go into that file. For `main`, once.
void HoldStandardStreams();

/// How much is said on the standard error beside errors.
enum class ESaid : u8 { Errors, Messages, Notes };
/// How progress is shown: in a line of a terminal, as JSON, one object a line, or not at all.
enum class EProgress : u8 { Terminal, Objects, Off };
/// For the command line, before anything is said.
void SetSaid(ESaid said);
void SetProgress(EProgress progress);
/// Whether what is merely worth knowing is to be said, too.
bool SaysNotes();

/// One line on the standard error, with the tool's name before it, unless errors alone are to be said. Characters that
/// a terminal would obey are shown.
void Say(std::string_view line);
/// A line as it is, whatever is to be said.
void SayError(std::string_view line);

/// Data on the standard output. Throws `CFault` when it cannot be written; what is written is handed over at once. On a
/// terminal, characters that it would obey are shown.
/// `closing` is what a document that is open needs behind this piece to be whole, where an interrupt ends it, at most
/// some hundred bytes; it holds until the next.
void Print(std::string_view text, std::optional<std::string_view> closing = {});

/// For a signal handler: closes the open document, and keeps `Print` from writing anything more. False while `Print`
/// writes, which raises the signal again when it is done; a second signal does not wait for it.
bool CloseDocument(int signal);

/// The columns of the terminal that the standard output goes to; nothing where it is none.
std::optional<std::size_t> TerminalWidth();

/// A whole document on the standard output, indented.
void PrintJson(const Json& document);

/// How far a long piece of work has come, how fast it goes and how long it will take, five times a second at most: in
/// one line of a terminal that is written over, when the work takes longer than a second, or as {"progress": {...}}.
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
    bool shown_ = false;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point next_;
};

}  // namespace ovix::app
