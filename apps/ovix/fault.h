#pragma once

#include <optional>
#include <string>

#include "apps/ovix/app_error.h"
#include "core/core.h"
#include "measure/measure.h"

namespace ovix::app {

/// What went wrong, in the parts of which its one line is made. Parts that do not apply stay empty.
struct SFault {
    EExit exit = ExitBadData;
    std::string id = {};             ///< "OVX-402": of what the measuring layer found; stays from version to version
    std::string file = {};           ///< the file that it is about, as the user wrote it
    std::optional<u64> frame = {};   ///< number of the frame in that file, from 0
    std::string block = {};          ///< of a recording
    std::optional<u64> offset = {};  ///< byte within the frame, or within the file when there is no frame
    std::string problem = {};        ///< what is the matter, when expected and found do not say it
    std::string expected = {};
    std::string found = {};
    std::string advice = {};  ///< what to do
};

/// An error that knows where it happened. Nobody prints it but `main`.
class CFault : public CAppError {
  public:
    explicit CFault(SFault facts);

    const SFault& Facts() const { return facts_; }
    /// "run.raw: frame 12, offset 614400: expected …, found …", in one line without its end. What is no printable
    /// character in names and texts from files is shown and not sent to the terminal.
    const char* what() const noexcept override { return line_.c_str(); }

  private:
    SFault facts_;
    std::string line_;
};

/// An error of the measuring layer in the words of the tool, with the exit status that its kind has.
CFault FaultOf(const measure::CError& error);
/// A fault of the command line.
CFault UsageFault(std::string problem);
/// A system call on a file failed: the problem is `doing`, with the words of `errorNumber`.
CFault SystemFault(EExit exit, std::string file, const std::string& doing, int errorNumber);

/// Texts from files may hold anything: control characters become "\x1B", so that no terminal obeys them.
std::string Printable(std::string_view text);

}  // namespace ovix::app
