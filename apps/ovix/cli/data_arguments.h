#pragma once

#include <string>
#include <vector>

#include "apps/ovix/output/frame_writer.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace ovix::app {

/// The options that say how values lie in the files that frames are written to.
class CDataArguments {
  public:
    void Add(CLI::App& verb);
    /// Puts what they say into the options of the writer for an extension (".tif"). Throws wrong usage for what would
    /// have no effect there.
    void Put(SWriteOptions& options, const std::string& extension) const;
    /// How values become whole numbers of 16 bits: of temperatures by hundredths of a degree from absolute zero on, of
    /// counts and signals by ones from 0 on, unless a step is given, which radiances need; none for floats.
    std::optional<SSteps> Steps(EUnit unit, ETempType scale) const;

  private:
    void RefuseIdle(const std::string& extension) const;
    void PutCompression(SWriteOptions& options, const std::string& extension) const;
    bool AsWholeNumbers() const;

    std::vector<const CLI::Option*> given_;
    std::string type_;
    double step_ = 0;
    std::string compression_;
    int level_ = 1;
    bool byTrace_ = false;
    bool noStatus_ = false;
    bool mask_ = false;
    bool squeeze_ = false;
};

}  // namespace ovix::app
