#include "reduce/pixels/corrected_lut.h"

#include <algorithm>

namespace ovix::reduce {

CCorrectedLut::CCorrectedLut(const CNucCorrector& correct, const SCorrectionTables* tables, STypedData frame,
                             EDataType destination, const float* lut, const u8* statusLut, u16 top)
    : frame_(correct, frame.data, ElementSize(frame.type), ElementSize(frame.type)),
      pixels_(static_cast<const u8*>(frame.data)),
      from_(ElementSize(frame.type)),
      look_(frame.type, destination, lut, statusLut, 0, top),
      lut_(lut),
      top_(top) {
    if (!tables) return;
    tables_ = *tables;
    if (!tables->gain || destination != Flt32 || !simd::GatheringPays()) return;
    together_ = correct.LimitsOfCounts();
    // A corrected count above the table's end is looked up there.
    if (together_) together_ = TLimits<u16>{std::min(together_->low, top), std::min(together_->high, top)};
}

void CCorrectedLut::operator()(u32 first, u32 count, void* results, u8* status) {
    if (together_) return Together(first, count, static_cast<float*>(results), status);
    if (!tables_) return look_(pixels_ + first * from_, results, status, count);
    alignas(64) u8 corrected[kLutBlock * 8];
    frame_.Block(*tables_, first, count, corrected);
    look_(corrected, results, status, count);
}

void CCorrectedLut::Together(u32 first, u32 count, float* values, u8* status) {
    const SCorrectionTables& t = *tables_;
    u16 places[kLutBlock];
    simd::SMovedPixels moved;
    simd::CorrectAndFetch(
        {reinterpret_cast<const u16*>(pixels_) + first, t.gain + first, t.offset ? t.offset + first : nullptr,
         t.replace ? t.replace + first : nullptr, first, *together_, lut_},
        places, values, count, moved);
    frame_.Moved(t, first, moved, places);
    for (u32 i = 0; i < moved.count; ++i) {
        u16& place = places[moved.places[i]];
        place = std::min(place, top_);
        values[moved.places[i]] = lut_[place];
    }
    look_.LookAtStatus(places, status, count);
}

}  // namespace ovix::reduce
