#pragma once

#include "reduce/filters/header_line_filter.h"
#include "reduce/filters/lor_header.h"

namespace ovix::reduce {

/// What the two decoders of the LOR camera family share: a packed little-endian header of 96 bytes at the start of the
/// header line, whose fields `lor_header.h` tells, with the differences between the two.
class CLORFilter : public CHeaderLineFilter {
  public:
    u64 FrameCounterMaxValue(GUID type) const override;
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;
    bool GetTriggerFields(GUID type, TArray<CString>& names) const override;

  protected:
    /// The trigger inputs are the first `triggerFields` of "Trigger" and "RecordStart".
    CLORFilter(const SHeaderLine& line, u8 triggerFields) : CHeaderLineFilter(line), triggerFields_(triggerFields) {}

    u8 PresetOf(const u8* header) const override;
    u64 CounterOf(const u8* header) const override;
    void SetTime(CDateTime& time, const u8* header, u16 width) const override;

    /// The frame info of the preset with the values of the 96 bytes; empty when a plug-in's class has its name.
    TSharedPtr<CFrameInfoReduceObject> FillFrameInfo(const u8* header, lor::EModel model, CReduceObjectArray& objects,
                                                     u8 preset) const;

  private:
    u8 triggerFields_;
};

}  // namespace ovix::reduce
