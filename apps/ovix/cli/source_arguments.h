#pragma once

#include <memory>
#include <string>

#include "apps/ovix/cli/frame_loop.h"
#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/input/input_file.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// The options that say which file is read, how its frames lie in it and which of them are wanted.
class CSourceArguments {
  public:
    void Add(CLI::App& verb);

    /// Throws `CFault` when the file is not there.
    std::shared_ptr<const CInputFile> OpenFile() const;
    /// The frames of that file. Throws `CFault` when it or the options would not do.
    std::unique_ptr<IFrameSource> Open(std::shared_ptr<const CInputFile> file) const;
    std::unique_ptr<IFrameSource> Open() const { return Open(OpenFile()); }
    /// The loop over the chosen frames of the source.
    CFrameLoop Frames(const IFrameSource& source) const;

  private:
    std::string file_;
    std::string pixelType_;
    std::string size_;
    std::string frameSize_;
    std::string frames_;
    std::string onError_ = "stop";
};

}  // namespace ovix::app
