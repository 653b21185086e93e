#pragma once

#include "core/convert_array.h"

namespace ovix::reduce {

/// Gain, offset, cast and clip of pixels that stand one behind the other, for one pair of types. It knows nothing of
/// selections, presets and replacement maps.
class CNucCorrector {
  public:
    /// The limits are cast to the destination type once, here.
    CNucCorrector(EDataType source, EDataType dest, bool clip, double minimum, double maximum);

    /// False for a pair that has no correction: then nothing may be corrected.
    bool IsValid() const { return formula_ != nullptr; }

    /// `gain` and `offset` stand beside `x`; either may be null. `x` and `dest` may be one buffer when their elements
    /// have one width.
    void operator()(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count) const;

    /// The result of a formula: the type depends on the source and on the tables.
    struct SResult {
        const void* data;
        EDataType type;
    };
    /// Up to `kBlock` pixels; answers the results, in `room` or, when they are the pixels themselves, in place.
    using FFormula = SResult (*)(const void* x, const float* gain, const i16* offset, void* room, std::size_t count);
    using FClip = void (*)(void* dest, std::size_t count, const void* low, const void* high);
    /// All steps at once; null limits do not clip.
    using FFused = void (*)(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count,
                            const void* low, const void* high);

    static constexpr std::size_t kBlock = 512;

  private:
    EDataType source_;
    EDataType dest_;
    FFormula formula_ = nullptr;
    FClip clip_ = nullptr;
    FFused fused_ = nullptr;
    alignas(8) u8 low_[8];
    alignas(8) u8 high_[8];
};

}  // namespace ovix::reduce
