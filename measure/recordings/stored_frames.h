#pragma once

#include "measure/recordings/frame_sums.h"
#include "measure/sources/frame_layout.h"

namespace ovix::measure {

/// How many frames of each preset a recording has.
class CFrameCounts {
  public:
    static constexpr u32 kPresets = reduce::CSourceInfoReduceObject::MaxPresets;

    /// With `fixedPreset` all frames count as of preset 0, whatever they say.
    explicit CFrameCounts(bool fixedPreset) : fixedPreset_(fixedPreset) {}

    /// Counts a frame that passed its family's check. Throws `CError` for one whose preset no recording can have.
    void Add(const CFrameProbe& probe, std::span<const u8> frame);
    /// Of `kPresets` presets.
    const u32* Data() const { return counts_; }

  private:
    bool fixedPreset_;
    u32 counts_[kPresets] = {};
};

/// The whole frames of a recording, whatever state it is in, each held against its family's check and, where there are
/// any, against the sums beside the recording, and counted. Where no decoder takes the pixel type, all frames pass and
/// count as of preset 0.
class CStoredFrames {
  public:
    /// Borrows a file that has pixels; torn places are reported.
    CStoredFrames(const CRecordingFile& file, bool fixedPreset, const Report& report);

    bool HasDecoder() const { return !probe_.Format().filter.empty(); }
    u64 Count() const { return layout_.Count(); }
    u64 OffsetOf(u64 frame) const { return layout_.Find(frame).value_or(SExtent{}).offset; }
    void ReportCut(const Report& report) const { layout_.ReportCut(report); }
    /// The bytes of a frame up to the next one, which hold until the next is read. Throws `CError`, its offset within
    /// the frame, for one that would not do; that is not counted.
    std::span<const u8> Read(u64 frame);
    const CFrameCounts& Counts() const { return counts_; }
    /// Holds the frames that are read from now on against these.
    void SetSums(SFrameSums sums) { sums_ = std::move(sums); }

  private:
    const CRecordingFile& file_;
    CFrameProbe probe_;
    CEqualFrames layout_;
    CFrameCounts counts_;
    std::optional<SFrameSums> sums_;
    std::vector<u8> bytes_;
};

}  // namespace ovix::measure
