#pragma once

#include <memory>
#include <vector>

#include "measure/decoder/decoder_process.h"
#include "measure/per_process.h"

namespace ovix::measure {

/// The helpers of one stream: as many as threads decode at once, each made when it is first needed and again after it
/// ended. Any number of threads; processes forked off make helpers of their own.
class CDecoderPool {
  public:
    CDecoderPool(SFrameFormat format, std::chrono::milliseconds patience)
        : format_(std::move(format)), patience_(patience) {}
    ~CDecoderPool();

    /// As `CDecoderProcess::Decode`. A helper that ended since the frame before is no fault of this one.
    void Decode(std::span<const u8> frame, u16* pixels) const;

  private:
    using Process = std::unique_ptr<CDecoderProcess>;

    Process Take() const;
    void Return(Process process) const;

    SFrameFormat format_;
    std::chrono::milliseconds patience_;
    TPerProcess<std::vector<Process>> idle_;
};

}  // namespace ovix::measure
