#pragma once

#include <optional>

#include "reduce/pixels/lut_kernel.h"
#include "reduce/pixels/nuc_kernel.h"

namespace ovix::reduce {

/// A frame that is corrected and looked up in a table, block by block: the results are those of `TFrameCorrection` and
/// `CLutKernel` one after the other. What cameras send mostly, counts that become floats, takes both steps in one loop.
class CCorrectedLut {
  public:
    /// Null tables stand for a frame that is not corrected. `statusLut` may be null where no status is asked.
    CCorrectedLut(const CNucCorrector& correct, const SCorrectionTables* tables, STypedData frame,
                  EDataType destination, const float* lut, const u8* statusLut, u16 top);

    /// The pixels from `first` on, at most `kLutBlock`; `status` may be null.
    void operator()(u32 first, u32 count, void* results, u8* status);

  private:
    void Together(u32 first, u32 count, float* values, u8* status);

    TFrameCorrection<CNucCorrector> frame_;
    std::optional<SCorrectionTables> tables_;
    const u8* pixels_;
    std::size_t from_;
    CLutKernel look_;
    const float* lut_;
    u16 top_;
    std::optional<TLimits<u16>> together_;  ///< the limits of both steps, where one loop makes them
};

}  // namespace ovix::reduce
