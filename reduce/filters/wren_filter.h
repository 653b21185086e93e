#pragma once

#include "reduce/filters/dunlin_filter.h"
#include "reduce/filters/dunlin_trailer.h"

namespace ovix::reduce {

/// The decoder of the Wren camera family: pixels of 14 bits, the preset in the two bits above the first of them, and a
/// trailer: the native one of `pruv_trailer.h`, or the older one of `tomz_trailer.h`. Reached through the factory as
/// "Wren".
///
/// It extends the 32-bit frame counter of older trailers as `ParseFrame` sees them: one object serves one stream.
class CWrenFilter final : public CDunlinFilter {
  public:
    CWrenFilter();
    static bool Register();

    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    // An older trailer's version, length and checksum are not looked at here, and its counter is not extended.
    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    /// A native buffer holds all images, the signature, and a record for each; a frame is stored with the signature and
    /// its own record. In an older one each image is followed by the lines of its trailer. False, and nothing written,
    /// for a frame whose record disables it, and when source or destination do not hold what is asked for.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    /// Takes every buffer for a native one.
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

  private:
    bool LoadOlder(SDunlinTrailer& values, const u8* trailer);
    u64 Extended(u32 counter);

    u64 counterHigh_ = 0;  ///< the part of the extended counter above 32 bits
    u32 lastCounter_ = 0;  ///< of the last older trailer
};

}  // namespace ovix::reduce
