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

    /// The preset for which a frame counts that passed its family's check. Throws `CError` for one whose preset no
    /// recording can have.
    static u32 PresetOf(const CFrameProbe& probe, std::span<const u8> frame);
    void Add(u32 preset) { ++counts_[fixedPreset_ ? 0 : preset]; }
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
    struct SRead {
        std::vector<u8> bytes;  ///< up to the next frame
        u32 preset = 0;         ///< for which it counts
    };
    /// Throws `CError`, its offset within the frame, for one that would not do. Any number of threads.
    SRead Read(u64 frame) const;
    void Tally(const SRead& frame) { counts_.Add(frame.preset); }
    const CFrameCounts& Counts() const { return counts_; }
    /// Holds the frames that are read from now on against these.
    void SetSums(CSumCheck sums) {
        sums_ = std::move(sums);
        sums_->Locate(file_.Bytes(), layout_);
    }

  private:
    const CRecordingFile& file_;
    CFrameProbe probe_;
    CEqualFrames layout_;
    CFrameCounts counts_;
    std::optional<CSumCheck> sums_;
};

}  // namespace ovix::measure
