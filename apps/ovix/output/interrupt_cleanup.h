#pragma once

#include <filesystem>

namespace ovix::app {

/// A file, or a folder of files and of folders of files, that an interrupt removes while this lives.
class CRemovedOnInterrupt {
  public:
    explicit CRemovedOnInterrupt(const std::filesystem::path& file);
    ~CRemovedOnInterrupt();
    CRemovedOnInterrupt(const CRemovedOnInterrupt&) = delete;
    CRemovedOnInterrupt& operator=(const CRemovedOnInterrupt&) = delete;

  private:
    int slot_;
};

/// Makes SIGINT, SIGTERM, SIGHUP and SIGPIPE, unless they are ignored, remove what is not committed and end the process
/// as if nobody had handled them, so that a shell's loop ends too. A write beyond the size limit of the process becomes
/// an ordinary error. For `main`, once.
void InstallInterruptCleanup();

}  // namespace ovix::app
