#pragma once

#include "core/date_time.h"
#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

/// The decoder of one family of raw camera frames.
///
/// Common arguments: `frame`, the raw bytes of one frame as the source delivered them, which stay the caller's;
/// `type`, the pixel type under which it was acquired; `width` and `height` of the image in pixels, a header line or a
/// trailer coming on top of it; `frameSize`, the buffer's size in bytes.
///
/// Some families repair a frame where it stands while they parse it, and say so in their headers: so a frame must be in
/// memory that can be written, and be parsed by one thread at a time. A source that may not be written to is copied
/// first. `StoreFrame`, `CheckForTrigger`, `CheckFrame` and `DescribeFrame` only read.
///
/// Operations trust their caller: they read the frame without testing its length unless their family says otherwise.
/// Call `CheckFrame` first on bytes that nobody vouches for. A false result leaves the out-arguments undefined; objects
/// may already have been created or changed.
///
/// A filter takes no lock. Some families keep small state between frames, so one object serves one stream.
class OVIX_REDUCE_API IFilter {
  public:
    virtual ~IFilter();

    virtual const wchar_t* GetName() const = 0;
    virtual bool HasPixels(GUID type) const = 0;
    /// Where the pixels stand in the frame, and the length of one line in bytes.
    virtual bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels,
                           i32& stride) = 0;

    /// Decodes the pixels to `dest` and the metadata to `objects`. A null `dest.data` asks for metadata only.
    virtual bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                            CReduceObjectArray& objects, u8& preset);
    /// `ParseFrame` for metadata only.
    virtual bool ParseReduceObjects(void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                                    CReduceObjectArray& objects, u8& preset);

    // The light operations scan a recording without building a text, touching an object or allocating.
    virtual bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset);
    virtual bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) = 0;
    virtual bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter);
    virtual bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                                CDateTime& time) = 0;

    /// Cuts image `frameIndex` out of a camera buffer of `frameCount` images, so that `dest` stands alone as one frame.
    virtual bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                            u16 frameIndex, void* dest, u32 destSize);
    /// Whether the input `field` (an index into the list of `GetTriggerFields`) fired, and in which image of the
    /// buffer.
    virtual bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                                 u8 field, bool& triggered, u16& frameIndex);

    virtual bool HasTime(GUID type) const;
    virtual bool HasFrameCounter(GUID type) const;
    /// The last value before the counter starts again from 0.
    virtual u64 FrameCounterMaxValue(GUID type) const;
    virtual bool GetTriggerFields(GUID type, TArray<CString>& names) const;
    /// Adds 1 to `counts` at the frame's preset. Only the first image of a buffer is looked at: false for the others.
    virtual bool CountPresets(void* frame, u32 frameSize, GUID type, u16 width, u16 height, u16 frameIndex,
                              u32* counts);

    virtual bool HasHeader(GUID type) const;
    /// The pixel type that stands for the header alone, and the header's bytes.
    virtual bool GetHeaderInfo(GUID type, u16 width, u16 height, u32 frameSize, GUID& headerType,
                               u32& headerSize) const;
    virtual bool ExtractHeader(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void* dest, u32 destSize);

    // Settings of a filter's own as an opaque block, for filters that have some.
    virtual bool GetConfigSize(GUID type, u32& size) const;
    virtual bool GetConfig(GUID type, void* dest, u32 size) const;
    virtual bool SetConfig(GUID type, const void* source, u32 size);
};

}  // namespace ovix::reduce
