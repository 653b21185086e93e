#pragma once

#include "reduce/filters/dunlin_filter.h"

namespace ovix::reduce {

/// The decoder of the Lapwing camera family: 16-bit pixels, and one line more for the trailer of `tomz_trailer.h`.
/// Reached through the factory as "Lapwing".
///
/// It remembers the preset for frames without a signature: one object serves one stream.
class CLapwingFilter final : public CDunlinFilter {
  public:
    CLapwingFilter();
    static bool Register();

    /// Takes a frame without a signature, too: its last line is read all the same.
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    // These three need the signature. The time is that of the time stamp, whatever the camera info says.
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    /// A buffer holds its frames one behind the other, each with its own trailer. A shorter destination gets the start
    /// of the frame. False, and nothing written, when the source does not hold what is asked for.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

  private:
    u8 PresetOf(const u8* trailer);

    u8 lastPreset_ = 0;  ///< of the last frame with a signature
};

}  // namespace ovix::reduce
