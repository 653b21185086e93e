#pragma once

#include "apps/ovix/synth/detector.h"

namespace ovix::app {

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

    /// What the detector gives for temperatures in kelvin. Belongs to this object until the next frame.
    const std::vector<u16>& Counts(std::span<const float> kelvin, u64 frame);
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const { return detector_.Correction(); }

  private:
    Response response_;
    CDetector detector_;
    std::vector<float> even_;
    std::vector<u16> counts_;
};

}  // namespace ovix::app
