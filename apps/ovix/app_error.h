#pragma once

#include <stdexcept>
#include <string>

namespace ovix::app {

/// What the tool leaves with.
enum EExit : int {
    ExitDone = 0,
    ExitBadData = 1,        ///< the data would not do
    ExitUsage = 2,          ///< wrong usage
    ExitSkipped = 3,        ///< done, but frames were skipped, or the source is damaged
    ExitFile = 4,           ///< a file is missing, unreadable, unwritable or of no known format
    ExitInterrupted = 130,  ///< by a signal
};

/// The end of a command: one line for standard error (file, frame, offset, what was expected, what was found) and the
/// exit status. Nothing that is written has appeared when it is thrown.
class CAppError : public std::runtime_error {
  public:
    CAppError(EExit exit, const std::string& line) : std::runtime_error(line), exit_(exit) {}
    EExit Exit() const { return exit_; }

  private:
    EExit exit_;
};

}  // namespace ovix::app
