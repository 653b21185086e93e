#pragma once

#include "reduce/filters/filter.h"

namespace ovix::reduce {

/// What one family of cameras with a header line says of its frames.
struct OVIX_REDUCE_API SHeaderLine {
    GUID frameType;            ///< frames with header line and pixels
    const wchar_t* frameName;  ///< of that type in the registry
    GUID headerType;           ///< stands for a buffer that holds the header and no pixels
    u16 words;                 ///< of 16 bits, that make the header at the start of the line
    u32 bytesRead;             ///< from the frame's start, whatever the width: a narrow line is followed by pixels

    /// Every operation that parses takes the two types, and 16-bit pixels of no known camera.
    bool Takes(const GUID& type) const;
};

/// The body of decoders for frames with one more line of 16-bit words ahead of the image: the line begins with a
/// header, the pixels start behind it, at byte 2 * width. Stateless.
///
/// A family derives from it, tells its `SHeaderLine`, reads three values in place and fills the objects; the rest is
/// stated here. Exported, as users of an exported family call its operations.
class OVIX_REDUCE_API CHeaderLineFilter : public IFilter {
  public:
    ~CHeaderLineFilter() override;

    // All but the header type have pixels.
    bool HasPixels(GUID type) const override;
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    // Always, whatever the type.
    bool HasTime(GUID type) const override;
    bool HasFrameCounter(GUID type) const override;

    // Only the frame type has a header that can be kept apart: as many of its words as the line has.
    bool HasHeader(GUID type) const override;
    bool GetHeaderInfo(GUID type, u16 width, u16 height, u32 frameSize, GUID& headerType,
                       u32& headerSize) const override;
    bool ExtractHeader(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void* dest, u32 destSize) override;

  protected:
    /// `line` lives at least as long as the filter.
    explicit CHeaderLineFilter(const SHeaderLine& line) : line_(line) {}

    // The light operations' share of a family: no allocation.
    virtual u8 PresetOf(const u8* header) const = 0;
    virtual u64 CounterOf(const u8* header) const = 0;
    virtual void SetTime(CDateTime& time, const u8* header, u16 width) const = 0;
    /// `ParseFrame` but for the gate on the type and the pixels.
    virtual bool FillObjects(const u8* header, GUID type, u16 width, CReduceObjectArray& objects, u8& preset) = 0;

    const SHeaderLine& Line() const { return line_; }

  private:
    const SHeaderLine& line_;
};

}  // namespace ovix::reduce
