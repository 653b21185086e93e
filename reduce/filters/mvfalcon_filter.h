#pragma once

#include "reduce/filters/header_line_filter.h"

namespace ovix::reduce {

/// The decoder of the Falcon camera family. Reached through the factory as "MVFalcon". It fills the frame info alone.
class CMVFalconFilter final : public CHeaderLineFilter {
  public:
    CMVFalconFilter();
    static bool Register();

    const wchar_t* GetName() const override;
    u64 FrameCounterMaxValue(GUID type) const override;

  protected:
    u8 PresetOf(const u8* header) const override;
    u64 CounterOf(const u8* header) const override;
    void SetTime(CDateTime& time, const u8* header, u16 width) const override;
    bool FillObjects(const u8* header, GUID type, u16 width, CReduceObjectArray& objects, u8& preset) override;
};

}  // namespace ovix::reduce
