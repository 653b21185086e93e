#pragma once

#include "apps/ovix/input/input_file.h"
#include "apps/ovix/output/output_file.h"
#include "core/core.h"

/// The tool's files as the library reads and writes them. Failures of the system are thrown as `CFault`, through the
/// library; so a write that the library does not look at cannot fail unseen.
namespace ovix::app {

/// The input is borrowed. Writing fails.
class CLibraryInput final : public IFile {
  public:
    explicit CLibraryInput(const CInputFile& input) : input_(input) {}

    u32 Write(const void*, u32) override { return 0; }
    u32 Read(void* data, u32 size) override;
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override;

  private:
    const CInputFile& input_;
    u64 position_ = 0;
};

/// The output is borrowed. It can be read back.
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
