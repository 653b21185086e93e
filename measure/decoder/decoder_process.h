#pragma once

#include <sys/types.h>

#include <chrono>
#include <span>
#include <string>

#include "core/core.h"
#include "measure/sources/frame_format.h"
#include "measure/sources/input_file.h"

namespace ovix::measure {

/// A helper process that decodes compressed frames of one format, so that its end is not ours. Frame and pixels lie in
/// memory that both map; the helper is a program of its own, is started without a copy of this process, holds no
/// descriptor of ours but these two, and ends when its socket is closed.
///
/// It belongs to the process that made it: in a forked child the object may only be destroyed, which leaves the
/// helper to the parent. One thread at a time.
class CDecoderProcess {
  public:
    /// Throws `CError` (HelperMissing, SystemFailed).
    CDecoderProcess(const SFrameFormat& format, std::chrono::milliseconds patience);
    ~CDecoderProcess();
    CDecoderProcess(const CDecoderProcess&) = delete;
    CDecoderProcess& operator=(const CDecoderProcess&) = delete;

    bool IsOurs() const;
    bool IsAlive() const { return end_.empty(); }
    /// Whether it ended by itself after it had served: it may have ended before the frame at hand came to it.
    bool DiedIdle() const { return !IsAlive() && served_ && !silent_; }

    /// Decodes a frame that the family's check passed to width times height 16-bit pixels. Throws `CError`
    /// (PixelsDamaged) when the decoder refuses the frame, leaves pixels out, dies or stays silent.
    void Decode(std::span<const u8> frame, u16* pixels);

  private:
    void Start(const SFrameFormat& format);
    void Grow(std::size_t bytes);
    bool Ask(std::size_t frameBytes, u8& answer);
    bool AwaitAnswer() const;
    void Stop(const char* how, bool byForce = true);

    pid_t owner_;
    pid_t helper_ = -1;
    std::chrono::milliseconds patience_;
    u32 pixelCount_;
    CDescriptor socket_;
    CDescriptor memory_;
    u8* mapped_ = nullptr;
    std::size_t mappedBytes_ = 0;
    std::string end_;  ///< how it came, for an error; empty before
    bool silent_ = false;
    bool misfit_ = false;
    bool served_ = false;
};

}  // namespace ovix::measure
