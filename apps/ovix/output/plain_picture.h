#pragma once

#include "apps/ovix/json.h"
#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/output/png_file.h"

namespace ovix::app {

/// How values become grey numbers of 16 bits:
///
///     value = offset + scale * number
///
/// Counts that fit are their own numbers. Of other values the scale is the least of 1, 2 or 5 times a power of ten with
/// which all numbers fit, and the number 0 says that there is no data.
class CPlainScale {
  public:
    /// For values between two finite ends.
    CPlainScale(SRange ends, const SUnitText& unit);

    /// "scale", "offset", and "noData": 0, or null where 0 is a value like others.
    Json Describe() const;
    /// The pixels; `beyond` becomes how many are too far beyond the ends for a number: they have the nearest.
    SPngRows Rows(const SPicture& picture, u16 width, u64& beyond) const;

  private:
    u16 NumberOf(float value, u64& beyond) const;

    double scale_ = 1;
    double offset_ = 0;
    bool ownNumbers_;
};

/// The pixels of video in their colours, and nothing else.
CCanvas DrawPixels(std::span<const u32> colours, u16 width, u16 height);

}  // namespace ovix::app
