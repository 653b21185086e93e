#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

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
/// the same fields, and a field that a route does not write keeps what it held; what an index counts is stated there
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

/// \name Statistics of pixels
///
/// Statistics of pixels in the unit of their buffer.
///
/// Values are taken in double, compared strictly and summed in walking order: the results do not depend on the machine.
/// A NaN never becomes an extreme unless it is the very first pixel, and makes the sum NaN. The kernels keep no state,
/// take no memory and run on the caller's thread; buffers belong to the caller. A null `status` means that every pixel
/// is valid. Nothing selected leaves extremes, positions, bounding box and mean as they were.
///
/// What the two groups write besides what is common:
///
/// |                          | void, frame             | void, list              | boolean          |
/// |--------------------------|-------------------------|-------------------------|------------------|
/// | index                    | frame index             | place in the list       | frame index      |
/// | bounding box             | frame, or masked pixels | selected pixels         | selected pixels  |
/// | allMinimum, allMaximum   | always                  | always                  | only with status |
/// | centerValue, -Status     | yes                     | no                      | no               |
/// | nothing selected         | all-indices stay        | all-indices stay        | they become ~0   |
/// @{

/// A frame. Where `mask` is given, a pixel is selected when mask[(height - 1 - y) * maskStride + x] is not 0: the mask
/// stands bottom-up beside the frame, unlike the masks of all other functions. A source of `UInt64`, or of no numeric
/// type, does nothing.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, int width, int height, u8* mask, u32 maskStride,
                              u8* status);
/// A compact buffer with one element for each entry of a list of frame indices. The status is frame-sized and read
/// through the list. Types as above.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, u32* indices, u32 count, int width, int height,
                              u8* status);
/// A buffer of `count` pixels, taken as a frame of one row. Types as above.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, u8* status, u32 count);

/// A frame. False, with nothing touched, for a type that is not numeric, also when either size is 0.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height);
/// The pixels of an area. This and the following are false, with nothing touched, for a type that is not numeric only.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height, SArea area);
/// Horizontal runs in array order.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height,
                              const TArray<SScanLine>& lines);
/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height,
                              const u32* indices, u32 count);
/// The pixels of an area. The mask is taken and not looked at.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height, SArea area,
                              const u8* mask, u32 maskStride);

/// @}

/// \name Statistics through a table
///
/// Statistics of the image that `ApplyLUT` would write, without writing it: each pixel of raw counts is taken through a
/// table of values and a table of status bytes, and goes to a `CStatsCalculator`.
///
/// Tables and limits are those of `ApplyLUT` (see apply_lut.h). A null `statusLut` stands for clean pixels. In the
/// per-preset forms `sourceStatus` holds each frame pixel's preset, and the arrays have one table for each preset that
/// occurs; null means preset 0 for all pixels.
///
/// As those of `CStatsCalculator`, index fields hold 0 (or ~0 where nothing was noted), and the all-extremes and the
/// bounding box go on from what `stats` held: pass a new object for figures of this selection alone.
///
/// All are false, with nothing touched, for a type that is not numeric, and true otherwise.
/// @{

/// A whole frame.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const float* lut,
                                 const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const u32* indices, u32 count,
                                 const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const u32* indices, u32 count, const float* const* luts, const u8* const* statusLuts,
                                 u16 lower, u16 upper);

/// The pixels of an area.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const float* lut,
                                 const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 SArea area, const float* const* luts, const u8* const* statusLuts, u16 lower,
                                 u16 upper);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const TArray<SScanLine>& lines,
                                 const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const TArray<SScanLine>& lines, const float* const* luts, const u8* const* statusLuts,
                                 u16 lower, u16 upper);

/// The pixels of an area whose mask[row * maskStride + column] is not 0, in frame coordinates from the top.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const u8* mask,
                                 u32 maskStride, const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 SArea area, const u8* mask, u32 maskStride, const float* const* luts,
                                 const u8* const* statusLuts, u16 lower, u16 upper);

/// @}

/// Fills a `CStats` pixel by pixel: `Start`, any number of `AddData`, `Finish`.
///
/// The record is the caller's and holds the running sums meanwhile. The all-extremes and the bounding box go on from
/// what it held, which is 0 in a new object: an all-maximum below 0 needs a record prepared for it. `firstIndex` and
/// `lastIndex` are not written.
class OVIX_REDUCE_API CStatsCalculator {
  public:
    explicit CStatsCalculator(CStats& stats) : stats_(stats) {}

    /// Clears sums, count, status fields, and sets the all-indices to ~0.
    void Start();
    /// One pixel with its value, status byte and place in the image.
    void AddData(double value, u8 status, int x, int y);
    /// Means, deviation, sizes and centre of what was added.
    void Finish();

  private:
    CStats& stats_;
    u32 index_ = 0;
};

/// \name Positions of a result
///
/// The six indices of a result (minimum, maximum, all-minimum, all-maximum, first, last) turned into the six points
/// beside them: the four positions and the corners of the bounding box. For statistics that were made of a compact
/// buffer: the indices are places in the selection named here.
/// @{

/// The selection is an area, row by row. An area that is 65536 wide is the caller's fault.
OVIX_REDUCE_API void CalcPositions(CStats& stats, SArea area);
/// Horizontal runs in array order. The point of an index that no run covers stays as it was.
OVIX_REDUCE_API void CalcPositions(CStats& stats, const TArray<SScanLine>& lines);
/// A whole frame. A width of 0 is the caller's fault, here and with the list.
OVIX_REDUCE_API void CalcPositions(CStats& stats, u16 width, u16 height);
/// A list of frame indices; an index beyond the list stands for pixel 0.
OVIX_REDUCE_API void CalcPositions(CStats& stats, u16 width, u16 height, const u32* indices, u32 count);
/// The pixels of an area whose mask[row * maskStride + column] is not 0. The point of an index beyond them stays.
OVIX_REDUCE_API void CalcPositions(CStats& stats, SArea area, const u8* mask, u32 maskStride);

/// @}

}  // namespace ovix::reduce
