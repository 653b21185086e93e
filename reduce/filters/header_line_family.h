#pragma once

#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_table.h"
#include "reduce/filters/header_line_filter.h"

/// What families with a header line share beside the body of their decoders: clocks without a year, and what they hand
/// over to the factory.
namespace ovix::reduce {

/// A day of the year and a time of day.
struct SDayClock {
    int day = 0;  ///< 1 being the first of January
    int hours = 0, minutes = 0, seconds = 0;
    int milliseconds = 0, microseconds = 0;

    /// The year of `time` stays.
    void Set(CDateTime& time) const { time.SetYDHMS(day, hours, minutes, seconds, milliseconds, microseconds); }
    /// In the present year.
    void SetInThisYear(CDateTime& time) const { Set(time.Now()); }
    /// "DDD:HH:MM:SS.mmmuuu".
    void AddTo(CFieldText& text) const;
};

/// The number that `digits` binary-coded decimal digits, four bits each, make; a digit of 10 to 15 is no error and
/// counts with its value.
constexpr int FromBcd(u32 bits, int digits) {
    int value = 0;
    while (digits-- > 0) value = 10 * value + static_cast<int>(bits >> (4 * digits) & 15);
    return value;
}

/// A clock of 16 decimal digits, two each in the low bytes of eight 16-bit words, the lowest digits first: three of
/// microseconds, three of milliseconds, then seconds, minutes and hours of two, and four of the day. Days from 1234 on
/// stand for those from 1 on.
SDayClock ClockOfDigits(const u8* words);

/// Registers a family and its frame type; the header type is handled, and bears no name in the registry.
bool RegisterHeaderLineFilter(const wchar_t* name, const SHeaderLine& line, CFilterFactory::Create_t create,
                              CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers);

// The answers of a family: `bytesRead` bytes, and of frames with pixels the line and the image.
bool CheckHeaderLine(const SHeaderLine& line, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                     SFrameFault* fault);
bool GetHeaderLineForm(const SHeaderLine& line, GUID type, SFrameForm& form);
/// A header names no size, and has no mark and no year.
void GetHeaderLineEvidence(const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                           SFrameEvidence& evidence);

/// All of that for the decoder `Filter` of one family; `describe` is what differs.
template <class Filter, const SHeaderLine& kLine>
bool RegisterHeaderLineFilter(const wchar_t* name, decltype(SFrameAnswers::describe) describe) {
    using Functions = TCreateAndDestroy<Filter, IFilter>;
    const auto check = [](const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
        return CheckHeaderLine(kLine, frame, type, width, height, frameSize, fault);
    };
    const auto form = [](GUID type, SFrameForm& found) { return GetHeaderLineForm(kLine, type, found); };
    return RegisterHeaderLineFilter(
        name, kLine, Functions::Create, Functions::Destroy,
        {.check = check, .form = form, .evidence = GetHeaderLineEvidence, .describe = describe});
}

}  // namespace ovix::reduce
