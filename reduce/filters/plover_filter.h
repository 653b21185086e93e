#pragma once

#include "reduce/filters/short_record_filter.h"

namespace ovix::reduce {

/// The decoder of the Plover cameras. Reached through the factory as "Plover". Infrared frames bear the camera's
/// number, video frames one that is counted here. **Frames are written to**: `CShortRecordFilter` tells what that asks
/// of the caller.
class CPloverFilter final : public CShortRecordFilter {
  public:
    CPloverFilter();
    static bool Register();

    /// Takes the record for big-endian whatever its marker says, also after another operation has turned it around:
    /// `ParseBasicInfo` gives the right number in every case.
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool HasFrameCounter(GUID type) const override;

  private:
    void OverruleRecord(u8* record, u16 width, u16 height) const override;
    void FillFrameInfo(CFrameInfoReduceObject& info, const u8* record) override;
    u64 BasicCounter(const u8* record) const override;
};

}  // namespace ovix::reduce
