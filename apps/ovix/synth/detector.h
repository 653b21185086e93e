#pragma once

#include <span>
#include <vector>

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The pixels of a detector: each answers even counts with a gain and an offset of its own and with noise, and a few
/// are stuck. Everything follows from the seed, by integer arithmetic, so that frames are the same on every machine.
class CDetector {
  public:
    /// `full` is the largest count.
    CDetector(const SSynthOptions& options, u16 full);

    /// The counts that an even detector would give, in the fractions of the formula, to what this one gives.
    void Read(std::span<const float> even, u64 frame, std::vector<u16>& raw) const;
    /// The tables that undo it, for preset 0; empty when there is nothing to undo.
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const;

  private:
    void MakePattern();
    void MakeBadPixels();
    /// The nearest good pixel in the row or the column, or the pixel itself when there is none near.
    u32 Neighbour(u32 pixel) const;

    u32 width_;
    u32 height_;
    u32 seed_;
    u16 full_;
    bool noise_;
    bool fixedPattern_;
    std::vector<float> gain_;  ///< what the correction multiplies by
    std::vector<i16> offset_;  ///< what it adds then
    std::vector<u8> bad_;
};

}  // namespace ovix::app
