#pragma once

#include <span>

#include "apps/ovix/input/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// How many frames of each preset a recording has.
class CFrameCounts {
  public:
    static constexpr u32 kPresets = reduce::CSourceInfoReduceObject::MaxPresets;

    /// With `fixedPreset` all frames count as of preset 0, whatever they say.
    explicit CFrameCounts(bool fixedPreset) : fixedPreset_(fixedPreset) {}

    /// Counts a frame that passed the decoder's check. Throws `CFault` for one whose preset no recording can have.
    void Add(reduce::IFilter& filter, const SFrameFormat& format, std::span<u8> frame);
    /// Counts a frame that nobody can look into.
    void AddUnseen() { ++counts_[0]; }
    /// Of `kPresets` presets.
    const u32* Data() const { return counts_; }

  private:
    bool fixedPreset_;
    u32 counts_[kPresets] = {};
};

}  // namespace ovix::app
