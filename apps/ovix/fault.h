#pragma once

#include <optional>
#include <string>

#include "apps/ovix/app_error.h"
#include "core/core.h"

namespace ovix::app {

/// What went wrong, in the parts of which its one line is made. Parts that do not apply stay empty.
struct SFault {
    EExit exit = ExitBadData;
    std::string file = {};           ///< the file that it is about, as the user wrote it
    std::optional<u64> frame = {};   ///< number of the frame in that file, from 0
    std::optional<u64> offset = {};  ///< byte within the frame, or within the file when there is no frame
    std::string problem = {};        ///< what is the matter, when expected and found do not say it
    std::string expected = {};
    std::string found = {};
};

/// An error that knows where it happened. Nobody prints it but `main`, and the loop over frames that goes on after it;
/// whoever knows the file or the frame better than the thrower fills them in on the way up.
class CFault : public CAppError {
  public:
    explicit CFault(SFault facts);

    const SFault& Facts() const { return facts_; }
    /// The same fault, of this frame of this file.
    CFault Of(const std::string& file, u64 frame) const;
    /// "run.raw: frame 12, offset 614400: expected …, found …", in one line without its end.
    const char* what() const noexcept override { return line_.c_str(); }

  private:
    SFault facts_;
    std::string line_;
};

/// A fault of the command line.
CFault UsageFault(std::string problem);
/// A system call on a file failed: the problem is `doing`, with the words of `errorNumber`.
CFault SystemFault(EExit exit, std::string file, const std::string& doing, int errorNumber);

}  // namespace ovix::app
