#pragma once

#include "apps/ovix/output/output_file.h"
#include "core/core.h"

namespace ovix::app {

/// An output of the tool as the library writes it. It is borrowed, and can be read back. Failures of the system are
/// thrown as `CFault`, through the library; so a write that the library does not look at cannot fail unseen.
class CLibraryOutput final : public IFile {
  public:
    explicit CLibraryOutput(COutputFile& output) : output_(output) {}

    u32 Write(const void* data, u32 size) override;
    u32 Read(void* data, u32 size) override;
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override;
    /// To the medium, so that what is written later cannot be there before what was written earlier.
    bool Flush() override;

  private:
    COutputFile& output_;
    u64 position_ = 0;
};

}  // namespace ovix::app
