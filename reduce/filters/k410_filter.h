#pragma once

#include "reduce/filters/camera_record_objects.h"
#include "reduce/filters/filter.h"
#include "reduce/filters/k410_container.h"
#include "reduce/filters/k410_types.h"

namespace ovix::reduce {

/// The decoder of the K410 camera family and of the R7X camera: uncompressed and compressed infrared frames, each with
/// the camera's own record, and video. Reached through the factory as "K410".
///
/// It counts frames, and remembers the record's mark counter between calls of `CheckForTrigger`: one object serves one
/// stream. The frame is never changed.
class CK410Filter final : public IFilter {
  public:
    static bool Register();

    const wchar_t* GetName() const override;
    bool HasPixels(GUID type) const override;
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

    bool HasTime(GUID type) const override;
    bool HasFrameCounter(GUID type) const override;
    bool GetTriggerFields(GUID type, TArray<CString>& names) const override;

  private:
    /// One frame as `ParseFrame` was given it.
    struct SFrame {
        const u8* bytes;
        const k410::SType& type;
        u16 width, height;
        u32 size;

        u64 Pixels() const { return u64{width} * height; }
    };
    // The three ways of `ParseFrame`.
    bool ParseUncompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    bool ParseCompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    bool ParseVideo(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    void CountFrame();

    u32 ownCounter_ = 0;  ///< frames parsed, 65535 being followed by 0
    u32 lastMark_ = 0;    ///< mark counter of the last record that `CheckForTrigger` saw
    bool lastMarkValid_ = false;
};

}  // namespace ovix::reduce
