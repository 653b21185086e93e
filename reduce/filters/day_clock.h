#pragma once

#include "core/date_time.h"

/// The clock of cameras that send a day of the year, a time of day and no year.
namespace ovix::reduce {

/// The number that `digits` binary-coded decimal digits, four bits each, make; a digit of 10 to 15 is no error and
/// counts with its value.
constexpr int FromBcd(u32 bits, int digits) {
    int value = 0;
    while (digits-- > 0) value = 10 * value + static_cast<int>(bits >> (4 * digits) & 15);
    return value;
}

/// Days from 1234 on stand for those from 1 on.
constexpr int CorrectedDay(int day) { return day >= 1234 ? day - 1233 : day; }

struct SDayClock {
    int day = 0;  ///< of the year, 1 being the first of January
    int hours = 0, minutes = 0, seconds = 0;
    int milliseconds = 0, microseconds = 0;

    /// The year of `time` stays.
    void Set(CDateTime& time) const { time.SetYDHMS(day, hours, minutes, seconds, milliseconds, microseconds); }
    /// In the present year.
    void SetInThisYear(CDateTime& time) const { Set(time.Now()); }
    /// "DDD:HH:MM:SS.mmmuuu".
    CString Text() const {
        return CString::FromFormat(L"%03u:%02u:%02u:%02u.%03u%03u", day, hours, minutes, seconds, milliseconds,
                                   microseconds);
    }
};

/// A clock of 16 decimal digits, two each in the low bytes of eight 16-bit words, the lowest digits first: three of
/// microseconds, three of milliseconds, then seconds, minutes and hours of two, and four of the day.
inline SDayClock ClockOfDigits(const u8* words) {
    const auto low = [&](u32 word) { return u32{words[2 * word]}; };
    return {.day = CorrectedDay(FromBcd(low(7) << 8 | low(6), 4)),
            .hours = FromBcd(low(5), 2),
            .minutes = FromBcd(low(4), 2),
            .seconds = FromBcd(low(3), 2),
            .milliseconds = FromBcd(low(2) << 4 | low(1) >> 4, 3),
            .microseconds = FromBcd((low(1) & 15) << 8 | low(0), 3)};
}

}  // namespace ovix::reduce
