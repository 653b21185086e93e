#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "apps/ovix/output/interrupt_cleanup.h"
#include "core/core.h"

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

/// A folder whose files somebody else writes beside its place, `out.zarr.part`, and that can be read as far as it is
/// written. What is not put into its place goes with the object and with an interrupt; of a killed process it stays.
class CStorePart {
  public:
    /// Makes it, empty. Throws `CFault`, also where there is one already.
    CStorePart(const std::filesystem::path& target, bool overwrite);
    ~CStorePart();
    CStorePart(const CStorePart&) = delete;
    CStorePart& operator=(const CStorePart&) = delete;

    const std::filesystem::path& Path() const { return part_; }
    /// Once all of it has reached the medium, it takes its place. What is there then stays, unless it may be replaced.
    void Put();

  private:
    int TakePlace() const;

    std::filesystem::path target_;
    std::filesystem::path part_;
    bool overwrite_;
    std::optional<CRemovedOnInterrupt> removed_;
};

}  // namespace ovix::app
