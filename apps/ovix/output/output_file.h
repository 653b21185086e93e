#pragma once

#include <filesystem>
#include <optional>

#include "apps/ovix/input_files.h"
#include "apps/ovix/output/interrupt_cleanup.h"
#include "apps/ovix/output/spool.h"
#include "measure/measure.h"

namespace ovix::app {

/// A file of the tool's, which appears whole or not at all, also after an interrupt; "-" is the standard output, to
/// which `Commit` prints all of it. Failures throw `measure::CError` with the file's name.
class COutputFile {
  public:
    /// Refuses a target that exists unless `overwrite` is set, and one that is no regular file or is read in any case.
    COutputFile(const std::filesystem::path& target, bool overwrite)
        : wayOut_(RequireNoInput(target)), file_(wayOut_.Path(), overwrite) {
        removed_.emplace(file_.Part());
    }

    /// At the end of what is written so far.
    void Write(const void* data, u64 size) { file_.Write({static_cast<const u8*>(data), size}); }
    /// Over or behind what is there; the place of the next `Write` stays.
    void WriteAt(u64 offset, const void* data, u64 size) {
        file_.WriteAt(offset, {static_cast<const u8*>(data), size});
    }
    /// The bytes that are there, at most `size` from `offset` on.
    u64 ReadAt(u64 offset, void* data, u64 size) { return file_.ReadAt(offset, {static_cast<u8*>(data), size}); }
    u64 Size() const { return file_.Size(); }
    const std::filesystem::path& Target() const { return file_.Target(); }
    /// The same as the library writes it.
    measure::COutputFile& File() { return file_; }

    /// Its part bears a name of which people are told, "TARGET.part", from now on.
    void Show() {
        file_.Show();
        removed_.emplace(file_.Part());
    }
    /// Puts the file into its place. Without `overwrite`, a file that has come into being there meanwhile stays.
    void Commit() {
        RequireNoInput(file_.Target());  // which was read meanwhile
        file_.Commit();
        wayOut_.Send();
    }

  private:
    CWayOut wayOut_;
    std::optional<CRemovedOnInterrupt> removed_;  ///< until the part is gone
    measure::COutputFile file_;
};

}  // namespace ovix::app
