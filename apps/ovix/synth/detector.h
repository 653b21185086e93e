#pragma once

#include <functional>
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
    std::vector<u32> badPixels_;  ///< those that are set there
};

/// How many counts a detector gives for a temperature, in fractions. Formulas are slow and bend little: the count comes
/// from a table from 0 to 100 degrees Celsius, to a thousandth of a count, and from the formula beyond it.
class CResponse {
  public:
    /// From a temperature in kelvin to counts, without a limit.
    using Formula = std::function<double(double kelvin)>;

    explicit CResponse(Formula formula);
    float At(float kelvin) const {
        const float place = (kelvin - kFirst) * kPerKelvin;
        if (!(place >= 0 && place < kSteps)) return static_cast<float>(formula_(kelvin));
        const auto step = static_cast<u32>(place);
        return table_[step] + (table_[step + 1] - table_[step]) * (place - static_cast<float>(step));
    }
    std::vector<float> At(std::span<const float> kelvin) const;

  private:
    static constexpr float kFirst = 273.15f;
    static constexpr float kPerKelvin = 64;
    static constexpr u32 kSteps = 6400;

    Formula formula_;
    std::vector<float> table_;
};

/// A camera whose frames bring no calibration. As a rule it gives 100 counts for each kelvin above 253.15 K, up to the
/// 14 bits of its converter: so a count tells the scene's temperature by eye, and black bodies can calibrate it.
class CPlainResponse {
  public:
    explicit CPlainResponse(const SSynthOptions& options, CResponse::Formula response = Linear)
        : response_(std::move(response)), detector_(options, kFullCount) {}

    static constexpr u16 kFullCount = 16383;
    static double Linear(double kelvin) { return 100 * (kelvin - 253.15); }

    /// What the detector gives for temperatures in kelvin.
    std::vector<u16> Counts(std::span<const float> kelvin, u64 frame) const {
        return detector_.Read(response_.At(kelvin), frame);
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const { return detector_.Correction(); }

  private:
    CResponse response_;
    CDetector detector_;
};

}  // namespace ovix::app
