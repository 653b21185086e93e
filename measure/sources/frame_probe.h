#pragma once

#include <optional>
#include <span>
#include <vector>

#include "measure/error.h"
#include "measure/sources/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// What frames of a format are. Plain counts have no decoder and are 16-bit counts.
reduce::SFrameForm FormOf(const SFrameFormat& format);
/// The bytes of a frame of plain pixels: 16-bit counts, or colours of 24 bits.
u64 PlainBytes(const SFrameFormat& format);

/// What can be said of bytes that may be a frame of a format, without their pixels. One thread at a time.
class CFrameProbe {
  public:
    explicit CFrameProbe(const SFrameFormat& format);

    const SFrameFormat& Format() const { return format_; }
    /// What is wrong with a frame; nothing when its decoder may be let loose on it.
    std::optional<CError> FaultOf(std::span<const u8> frame) const;
    bool Passes(std::span<const u8> frame) const;
    /// Whether a frame of just this many bytes begins here, for those that look for one: a frame that is read from the
    /// wrong byte on may pass as another form of its family, which is longer or shorter.
    bool Begins(std::span<const u8> bytes, u64 smallest) const {
        return Passes(bytes) && SmallestSize(bytes) == smallest;
    }
    /// Whether bytes that pass are told from others by it; without that every place would pass.
    bool TellsFrames(u64 size) const;
    /// From now on a frame passes only when its decoder reads number and time of it, for families whose check does not
    /// look at the signature.
    void AskForSignature() { asksForSignature_ = true; }
    bool HasSignature(std::span<const u8> frame) const;
    /// The smallest size with which the frame that begins the bytes passes. Throws `CError` when it does with none.
    u64 SmallestSize(std::span<const u8> bytes) const;
    /// The most bytes that a frame can have with what stands behind its pixels.
    u64 MostBytes() const { return u64{format_.PixelCount()} * 3 + kMostTail; }

    /// The preset for which a recording counts the frame; nothing when the decoder does not find it.
    std::optional<u32> Preset(std::span<const u8> frame) const;
    reduce::SFrameEvidence Evidence(std::span<const u8> frame) const;
    struct SCarried {
        std::optional<u64> counter = {};
        std::optional<CDateTime> time = {};
    };
    /// The number and the time that a frame carries, of one that passes. The light operations of some decoders make
    /// them up, so this goes by the metadata.
    SCarried Carried(std::span<const u8> frame) const;
    /// The number behind a number; it starts again from 0 behind the last.
    u64 CounterAfter(u64 counter) const;
    /// The metadata of the frame, and its preset; nothing for one that would not do.
    std::optional<u8> ParseMetadata(std::span<u8> frame, reduce::CReduceObjectArray& objects) const;

    /// Bytes that may stand behind what a decoder reads of a frame.
    static constexpr u64 kMostTail = u64{64} << 10;

  private:
    /// Some decoders put a frame right where it stands.
    u8* Copy(std::span<const u8> frame) const;

    SFrameFormat format_;
    CString name_;
    TSharedPtr<reduce::IFilter> filter_;
    bool asksForSignature_ = false;
    mutable std::vector<u8> scratch_;
};

}  // namespace ovix::measure
