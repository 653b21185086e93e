#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/text_table.h"
#include "core/core.h"

namespace ovix::app {

/// A good pixel this far from the scene, in kelvin, is no measurement any more.
inline constexpr double kDemoLimitKelvin = 0.1;

/// How far measured temperatures are from those of the scene; differences in kelvin.
struct SAgreement {
    u64 good = 0;  ///< pixels with status 0 that the detector itself has measured
    double max = 0;
    double rms = 0;
    u64 replaced = 0;  ///< bad pixels, which show a neighbour's temperature
    double replacedMax = 0;
    u64 flagged = 0;  ///< pixels with a status

    bool Holds() const { return good > 0 && max < kDemoLimitKelvin; }
    Json Document() const;
};

/// Compares temperatures of a scale, pixel by pixel. A `badPixels` that is not 0 marks a pixel that is replaced.
SAgreement CompareWithScene(std::span<const float> values, std::span<const u8> status, const u8* badPixels,
                            std::span<const float> kelvin, ETempType scale);

/// A table whose rows say what was measured, a fact about it, and its agreement.
class CAgreementTable {
  public:
    CAgreementTable(const char* what, CTextTable::SColumn fact);
    void Row(const std::string& what, const std::string& fact, const SAgreement& agreement);
    std::string Text() const { return table_.Text(); }

  private:
    CTextTable table_;
};

}  // namespace ovix::app
