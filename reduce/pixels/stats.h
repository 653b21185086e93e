#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// Pixels whose status has one of these bits are not counted: they appear in the "all" extremes and the bounding box
/// only.
inline constexpr u8 kNotCounted = 8 | 16;

/// Whether a pixel with this status counts.
constexpr bool IsCounted(u8 status) { return (status & kNotCounted) == 0; }

/// The figures of a frame or a region, in the unit of its pixels.
///
/// Two sets of extremes stand side by side: `minimum` and `maximum` are those of the valid pixels (see `kNotCounted`;
/// without a status buffer all are valid), `allMinimum` and `allMaximum` those of all selected pixels. Of equal values
/// the first in walking order keeps its place.
///
/// A new object is all zeros. The routes that fill it (`GetStats`, `GetStatsLUT`, `CStatsCalculator`) do not all write
/// the same fields, and a field that a route does not write keeps what it held; what an index counts is told there
/// too.
struct CStats {
    double mean = 0;  ///< of the valid pixels; kept when there are none
    double sum = 0;
    double variance = 0;  ///< population variance, computed in one pass; 0 below two pixels
    double standardDeviation = 0;
    double minimum = 0;
    double maximum = 0;
    SPoint minimumPosition;
    SPoint maximumPosition;
    u32 minimumIndex = 0;
    u32 maximumIndex = 0;
    double allMinimum = 0;
    double allMaximum = 0;
    SPoint allMinimumPosition;
    SPoint allMaximumPosition;
    u32 allMinimumIndex = 0;  ///< all ones if there is none
    u32 allMaximumIndex = 0;  ///< all ones if there is none
    u32 count = 0;            ///< valid pixels
    double reserved1[3] = {};
    double centerValue = 0;  ///< at the centre of the bounding box, where a route computes it
    u32 reserved2 = 0;
    float centerX = 0;  ///< (left + right) / 2 of the bounding box
    float centerY = 0;
    SPoint reserved3;
    SPoint boundsTopLeft;      ///< corner of the bounding box of the selected pixels, valid or not
    SPoint boundsBottomRight;  ///< the opposite corner, inclusive
    u32 firstIndex = 0;        ///< frame index of the box's first corner
    u32 lastIndex = 0;         ///< frame index of the opposite corner
    u32 boundsWidth = 0;       ///< 0 if no pixel is valid
    u32 boundsHeight = 0;
    u8 statusUnion = 0;  ///< all status bytes of the valid pixels ORed
    u8 minimumStatus = 0;
    u8 maximumStatus = 0;
    u8 centerStatus = 0;
};

}  // namespace ovix::reduce
