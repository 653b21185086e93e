#pragma once

#include <optional>

#include "core/typed_data.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/simd/lut_simd.h"

/// Tables that are indexed by signal value, over pixels that stand one behind the other.
namespace ovix::reduce {

/// Finds the places of `count` pixels by `LutIndex`. Answers where they stand: in `places`, or in the pixels themselves
/// when those are their own places.
using FLutIndexSpan = const u16* (*)(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper);

/// For pixels of a numeric type (`UInt64` counts as unsigned); null for any other type.
FLutIndexSpan LutIndexFunction(EDataType type);

/// Pixels that go through the steps of these kernels together.
inline constexpr u32 kLutBlock = 2048;

/// A table of status bytes. It holds few, long runs of one value: a pixel's entry is found sooner among these than in
/// the table. What was found out of the table is kept, and grows with the places that blocks ask for, as far as the
/// pixels that asked are worth it.
class CStatusTable {
  public:
    CStatusTable(const u8* entries, u16 lower) : entries_(entries), lower_(lower) {}

    /// The entries at the places of a block of `blockCount` pixels, or of a part of it; `range` is the block's.
    void Look(simd::SPlaceRange range, u32 blockCount, const u16* places, u8* status, u32 count);

  private:
    bool Knows(simd::SPlaceRange range, u32 count);
    void FindRuns();

    const u8* entries_;
    u16 lower_;
    u32 asked_ = 0;  ///< pixels that had to fetch their entries
    simd::SPlaceRange known_ = {65535, 0};
    simd::SStatusRuns runs_;
};

/// One pair of tables for all pixels, and the types of both buffers. Made once for a frame, also where the frame comes
/// in blocks.
class CLutKernel {
  public:
    /// Types as `ApplyLUT` takes them; `statusLut` may be null where no status is asked.
    CLutKernel(EDataType source, EDataType destination, const float* lut, const u8* statusLut, u16 lower, u16 upper);

    /// `count` pixels, of any number, one behind the other; `status` may be null.
    void operator()(const void* pixels, void* destination, u8* status, std::size_t count);

    /// The values and the status at the places of at most `kLutBlock` pixels.
    void Look(const u16* places, float* values, u8* status, u32 count);
    /// The status alone; `status` may be null.
    void LookAtStatus(const u16* places, u8* status, u32 count);

  private:
    FLutIndexSpan findPlaces_;
    FConvertSpan convert_;
    std::size_t from_;
    std::size_t to_;
    bool direct_;
    const float* lut_;
    CStatusTable status_;
    u16 lower_;
    u16 upper_;
};

/// The pair of tables of each pixel's preset. Merged frames hold long stretches of one preset: such a stretch goes as
/// with a single pair, and only what lies between pixel by pixel.
class CPresetLuts {
  public:
    /// No tables of status stand for clean pixels, as does a null one among them.
    CPresetLuts(const float* const* luts, const u8* const* statusLuts, u16 lower)
        : luts_(luts), statusLuts_(statusLuts), lower_(lower) {}

    /// The values and, where asked, the status at the places of `count` pixels of these presets.
    void Look(const u8* presets, const u16* places, float* values, u8* status, u32 count);

  private:
    /// For n pixels of a block of `blockCount`, whose range is at hand.
    void LookAtStatus(u8 preset, simd::SPlaceRange range, u32 blockCount, const u16* places, u8* status, u32 n);
    const u8* StatusLut(u8 preset) const { return statusLuts_ ? statusLuts_[preset] : nullptr; }

    const float* const* luts_;
    const u8* const* statusLuts_;
    u16 lower_;
    std::optional<CStatusTable> status_[kMapPresets];  ///< of presets that occurred: others have no entry
};

}  // namespace ovix::reduce
