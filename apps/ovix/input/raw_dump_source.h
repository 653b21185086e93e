#pragma once

#include <memory>

#include "apps/ovix/input/dump_layout.h"
#include "apps/ovix/input/frame_source.h"

namespace ovix::app {

/// A file of raw frames, one behind the other, as a camera delivered them.
class CRawDumpSource final : public IFrameSource {
  public:
    /// `frameSize` 0 asks for the layout to be found. Throws `CFault` for a file that cannot be read or holds no frame.
    CRawDumpSource(std::shared_ptr<const CInputFile> file, SFrameFormat format, u32 frameSize);

    const std::string& Name() const override { return file_->Name(); }
    const SFrameFormat& Format() const override { return format_; }
    u64 Count() const override { return layout_->Count(); }
    u64 FrameSize() const override { return layout_->FrameSize(); }
    void Read(u64 index, std::vector<u8>& frame) override;
    void Describe(reduce::CReduceObjectArray& objects) const override;

  private:
    std::shared_ptr<const CInputFile> file_;
    SFrameFormat format_;
    std::unique_ptr<IDumpLayout> layout_;
};

}  // namespace ovix::app
