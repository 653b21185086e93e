#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "apps/ovix/output/interrupt_cleanup.h"

namespace ovix::app {

/// A file without a name in the system's folder for such, which goes when it is closed. Throws `CFault`.
int OpenNamelessFile();
/// Prints what is in a file, from its start on.
void PrintFile(int descriptor, const std::string& name);

/// What comes through a pipe, in a temporary file without a name, so that it can be read at any place.
class CSpool {
  public:
    /// Copies all of a file; "-" is the standard input. Throws `CFault` when it cannot be read or there is no room.
    explicit CSpool(const std::string& file);
    ~CSpool();
    CSpool(const CSpool&) = delete;
    CSpool& operator=(const CSpool&) = delete;

    int Descriptor() const { return spool_; }
    const std::string& Name() const { return name_; }

  private:
    void Copy(int from);

    std::string name_;
    int spool_ = -1;
};

/// Where somebody else writes a file that is to go to the standard output: its own path, or for "-" one in a folder
/// that goes with the object.
class CWayOut {
  public:
    explicit CWayOut(const std::filesystem::path& target);
    ~CWayOut();
    CWayOut(const CWayOut&) = delete;
    CWayOut& operator=(const CWayOut&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    /// Prints the file where it is on its way to the standard output.
    void Send();

  private:
    void Remove();

    std::filesystem::path folder_;
    std::optional<CRemovedOnInterrupt> removed_;
    std::filesystem::path path_;
};

/// What others wrote reaches the medium, so that it may take its name: by `fsync` a file, by `syncfs` all of the file
/// system, for a folder of thousands of files. Throws `CAppError`.
void SyncByName(const std::filesystem::path& path, int (*sync)(int));

}  // namespace ovix::app
