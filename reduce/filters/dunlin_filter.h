#pragma once

#include "core/pixel_types.h"
#include "reduce/filters/dunlin_reduce_objects.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_table.h"

namespace ovix::reduce {

/// What one family of the two says of itself.
struct SDunlinFamily {
    const wchar_t* name;  ///< registered, and of the pixel type
    GUID type;

    /// Every operation that parses takes the family's type, and 16-bit pixels of no known camera.
    bool Takes(const GUID& pixelType) const { return pixelType == type || pixelType == rootIRType; }
    bool GetForm(const GUID& pixelType, SFrameForm& form) const;
    /// Registers decoder and pixel type.
    bool Register(CFilterFactory::Create_t create, CFilterFactory::Destroy_t destroy,
                  const SFrameAnswers& answers) const;
};

/// What the decoders of Lapwing and Wren have in common: one pixel type; 16-bit pixels at the start of the frame, and a
/// trailer behind them.
class CDunlinFilter : public IFilter {
  public:
    const wchar_t* GetName() const override { return family_.name; }
    bool HasPixels(GUID type) const override { return type == family_.type; }
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;

    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    // Whatever the type.
    bool HasTime(GUID type) const override;
    bool HasFrameCounter(GUID type) const override;
    u64 FrameCounterMaxValue(GUID type) const override;
    bool GetTriggerFields(GUID type, TArray<CString>& names) const override;

    static const u8* TrailerOf(const void* frame, u16 width, u16 height) {
        return static_cast<const u8*>(frame) + ImageSize(width, height);
    }

  protected:
    /// `family` lives as long as the filter.
    explicit CDunlinFilter(const SDunlinFamily& family) : family_(family) {}

    bool Takes(const GUID& type) const { return family_.Takes(type); }

    // A family's share of the light operations: false for bytes that are no trailer.
    virtual bool ReadCounter(const u8* trailer, u64& counter) const = 0;
    virtual bool ReadTime(const u8* trailer, CDateTime& time) const = 0;
    /// Of `ParseBasicInfo`, which need not be that of `ParsePreset`.
    virtual u8 BasicPreset(const void* frame, const u8* trailer) const = 0;

  private:
    const SDunlinFamily& family_;
};

/// The objects of one preset that frames of both families fill.
struct SDunlinObjects {
    /// Fetches the three in this order and makes those that are missing.
    SDunlinObjects(CReduceObjectArray& objects, u8 preset);

    /// False when a plug-in owns one of the names with a class of its own: there is nothing to fill then.
    explicit operator bool() const { return frameInfo && factoryCal && dunlinInfo; }

    TSharedPtr<CFrameInfoReduceObject> frameInfo;
    TSharedPtr<CDunlinFactoryCalReduceObject> factoryCal;
    TSharedPtr<CDunlinFrameInfoReduceObject> dunlinInfo;
};

/// The time code that stands in the trailers of both families: 11 bytes with time flags, day of the year, time of day,
/// microseconds of the second, and year.
namespace time_code {

constexpr u8 kIsUsed = 1;        ///< time flag: the code is the time of the frame, not the time stamp
constexpr u8 kYearNotValid = 4;  ///< time flag
constexpr u32 kSize = 11;

using CFrame = SDunlinFrame;
inline constexpr TKeptField<CFrame> kFields[] = {
    Number<u8, &CFrame::timeFlags>(0, L"TimeFlags"), Number<u16, &CFrame::dayOfYear>(1, L"DayOfYear"),
    Number<u8, &CFrame::hours>(3, L"Hours"),         Number<u8, &CFrame::minutes>(4, L"Minutes"),
    Number<u8, &CFrame::seconds>(5, L"Seconds"),     Number<u32, &CFrame::microseconds>(6, L"Microseconds"),
    Number<u8, &CFrame::year>(10, L"Year"),
};
static_assert(EndOf(kFields) == kSize);

/// From the code; without a valid year that of `time` stays.
void SetTime(CDateTime& time, const u8* code);
/// From a time stamp in microseconds since the start of 1601.
inline void SetTime(CDateTime& time, u64 timeStamp) { time.SetTimestamp(static_cast<i64>(timeStamp * 10)); }

}  // namespace time_code

}  // namespace ovix::reduce
