#pragma once

#include <optional>
#include <span>
#include <utility>

#include "apps/ovix/output/palette.h"

namespace ovix::app {

/// Shares of a frame's pixels, in percent, the first below the second: the values at these places of their order stand
/// at the ends of the palette.
using Percentiles = std::pair<double, double>;

/// The values at the ends of the palette that suit one frame, of pixels that are finite and neither under, over nor
/// without data; none where there is no such pixel. `status` may be empty.
///
/// Without percentiles from the least value to the greatest, but for pixels that no lens could have shown alone: those
/// that lie beyond 99.8 % of the pixels by 0.35 of the span of these, while fewer than three of their eight neighbours
/// do. So a dead pixel does not make all others look alike, and a small hot spot is in the range.
std::optional<SRange> SuitingRange(std::span<const float> values, std::span<const u8> status, u32 width,
                                   const std::optional<Percentiles>& percentiles = {});

/// Of the ranges that suit several frames the one that suits them all.
class CCommonRange {
  public:
    void Add(const std::optional<SRange>& range);
    const std::optional<SRange>& Widest() const { return widest_; }
    /// With its ends apart; 0 to 1 where no frame had one.
    SRange Range() const;

  private:
    std::optional<SRange> widest_;
};

}  // namespace ovix::app
