#pragma once

#include <filesystem>
#include <string>

#include "core/core.h"

namespace ovix::app {

/// A file that appears whole or not at all: it is written beside its place under a name of its own, made safe on the
/// medium and renamed by `Commit`. Without that, it is gone when the object goes, and after an interrupt, unless its
/// part is to be kept.
///
/// "-" is the standard output: what is written waits in a file without a name, and `Commit` prints it.
///
/// Every failure throws `CAppError` with one line that names the file and the system's reason.
class COutputFile {
  public:
    /// Refuses a target that exists unless `overwrite` is set, and one that is no regular file in any case.
    /// With `keepPart`, what is written so far has the target's name with ".part" behind it, and stays there when it is
    /// never committed; a part that is there already is refused, whatever `overwrite` says.
    COutputFile(std::filesystem::path target, bool overwrite, bool keepPart = false);
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// At the end of what is written so far.
    void Write(const void* data, u64 size);
    /// Over or behind what is there; the place of the next `Write` stays.
    void WriteAt(u64 offset, const void* data, u64 size);
    /// The bytes that are there, at most `size` from `offset` on.
    u64 ReadAt(u64 offset, void* data, u64 size);
    u64 Size() const { return size_; }
    const std::filesystem::path& Target() const { return target_; }
    /// The name of what is written so far.
    const std::string& Part() const { return temporary_; }

    /// All that is written has reached the medium.
    void Sync();
    /// Puts the file into its place. Without `overwrite`, a file that has come into being there meanwhile stays.
    void Commit();

  private:
    [[noreturn]] void Fail(const char* doing);
    bool IsPrinted() const { return target_ == "-"; }
    void OpenPart();

    std::filesystem::path target_;
    std::string temporary_;
    int file_ = -1;
    int slot_ = -1;
    u64 size_ = 0;
    bool overwrite_;
    bool keepPart_;
};

/// What others wrote reaches the medium, so that it may take its name: by `fsync` a file, by `syncfs` all of the file
/// system, for a folder of thousands of files. Throws `CAppError`.
void SyncByName(const std::filesystem::path& path, int (*sync)(int));

/// A file of somebody else's, or a folder of files and of folders of files, that an interrupt removes while this lives.
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
