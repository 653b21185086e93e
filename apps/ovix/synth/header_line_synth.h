#pragma once

#include "apps/ovix/synth/plain_response.h"

namespace ovix::app {

/// Writes the header of a frame; all bytes are 0 beforehand.
using WriteHeader = void (*)(u8* header, const SSynthOptions& options, u64 frame);

/// Frames with one more line of 16-bit words ahead of the image, which begins with a header; in a line that is shorter
/// than the header, with as much of it as there is room for.
class CHeaderLineSynth : public ISynthesizer {
  public:
    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) override;
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override { return camera_.Correction(); }

  protected:
    /// Throws wrong usage for an image so small that the decoder would read the header beyond the frame.
    CHeaderLineSynth(const SSynthOptions& options, u32 headerBytes, WriteHeader write,
                     CPlainResponse::Response response);

  private:
    SSynthOptions options_;
    u32 headerBytes_;
    WriteHeader write_;
    CPlainResponse camera_;
};

template <u32 kHeaderBytes, WriteHeader kWrite, CPlainResponse::Response kResponse = CPlainResponse::Linear>
class THeaderLineSynth final : public CHeaderLineSynth {
  public:
    explicit THeaderLineSynth(const SSynthOptions& options)
        : CHeaderLineSynth(options, kHeaderBytes, kWrite, kResponse) {}
};

}  // namespace ovix::app
