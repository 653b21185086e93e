#pragma once

#include "reduce/filters/filter_factory.h"

namespace ovix::reduce {

/// What one family of the two says of itself.
struct SDunlinFamily {
    const wchar_t* name;  ///< registered, and of the pixel type
    GUID type;
};

/// What the decoders of Lapwing and Wren have in common: one pixel type, which every operation that parses takes beside
/// `rootIRType`; 16-bit pixels at the start of the frame, and a trailer behind them.
class CDunlinFilter : public IFilter {
  public:
    const wchar_t* GetName() const override;
    bool HasPixels(GUID type) const override;
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;

    // Whatever the type.
    bool HasTime(GUID type) const override;
    bool HasFrameCounter(GUID type) const override;
    u64 FrameCounterMaxValue(GUID type) const override;
    bool GetTriggerFields(GUID type, TArray<CString>& names) const override;

    static bool Takes(const SDunlinFamily& family, const GUID& type);
    static bool GetForm(const SDunlinFamily& family, const GUID& type, SFrameForm& form);
    /// Bytes of the image, which is also where the trailer begins.
    static constexpr u64 ImageSize(u16 width, u16 height) { return u64{2} * width * height; }

  protected:
    /// `family` lives as long as the filter.
    explicit CDunlinFilter(const SDunlinFamily& family) : family_(family) {}

    bool Takes(const GUID& type) const { return Takes(family_, type); }
    static const u8* TrailerOf(const void* frame, u16 width, u16 height) {
        return static_cast<const u8*>(frame) + ImageSize(width, height);
    }

    /// Registers decoder and pixel type.
    static bool Register(const SDunlinFamily& family, CFilterFactory::Create_t create,
                         CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers);

  private:
    const SDunlinFamily& family_;
};

}  // namespace ovix::reduce
