#pragma once

#include "reduce/filters/short_record_filter.h"

namespace ovix::reduce {

/// The decoder of the MV310 cameras. Reached through the factory as "MV310". It numbers all frames by itself, and
/// writes the caller's geometry into the record. **Frames are written to**: `CShortRecordFilter` tells what that asks
/// of the caller.
class CMV310Filter final : public CShortRecordFilter {
  public:
    CMV310Filter();
    static bool Register();

    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    /// Images of a packet share one record: their times are spaced evenly over 33 milliseconds. False, with nothing
    /// written, when the sizes would not do or infrared images come without a record.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;

  private:
    void OverruleRecord(u8* record, u16 width, u16 height) const override;
    void FillFrameInfo(CFrameInfoReduceObject& info, const u8* record) override;
    u64 BasicCounter(const u8* record) const override;
};

}  // namespace ovix::reduce
