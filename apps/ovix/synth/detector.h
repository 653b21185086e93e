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
    std::vector<u16> Read(std::span<const float> even, u64 frame) const;
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

/// A camera whose frames bring no calibration. As a rule it gives 100 counts for each kelvin above 253.15 K, up to the
/// 14 bits of its converter: so a count tells the scene's temperature by eye, and black bodies can calibrate it.
class CPlainResponse {
  public:
    /// The count of a temperature in kelvin, in fractions and without a limit.
    using Response = float (*)(float kelvin);

    explicit CPlainResponse(const SSynthOptions& options, Response response = Linear)
        : response_(response), detector_(options, kFullCount) {}

    static constexpr u16 kFullCount = 16383;
    static constexpr float kCountsPerKelvin = 100;
    static constexpr float kKelvinOfZero = 253.15f;
    static float Linear(float kelvin) { return kCountsPerKelvin * (kelvin - kKelvinOfZero); }

    /// What the detector gives for temperatures in kelvin.
    std::vector<u16> Counts(std::span<const float> kelvin, u64 frame) const;
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const { return detector_.Correction(); }

  private:
    Response response_;
    CDetector detector_;
};

}  // namespace ovix::app
