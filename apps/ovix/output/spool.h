#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "apps/ovix/output/output_file.h"

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
    explicit CWayOut(const std::string& target);
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

}  // namespace ovix::app
