#pragma once

#include <string>
#include <vector>

#include "apps/ovix/cli/regions.h"
#include "apps/ovix/output/frame_writer.h"

namespace CLI {
class Option;
}

namespace ovix::app {

/// The options that say how pictures look.
class CPictureArguments {
  public:
    void Add(CLI::App& verb);
    /// Throws wrong usage for those that were given: what is written is no picture.
    void RefuseAll() const;
    /// The same for those that speak of values and of a palette: the picture is one of video.
    void RefuseOfVideo() const;
    /// Puts what they say into the options of the writer.
    void Put(SWriteOptions& options, u16 width, u16 height) const;

  private:
    void PutRange(SWriteOptions& options) const;

    std::vector<const CLI::Option*> given_;
    std::string range_;
    std::string palette_;
    std::string zoom_;
    CRegionArguments regions_;
    std::vector<std::string> isotherms_;
    bool markExtremes_ = false;
    bool plain_ = false;
};

}  // namespace ovix::app
