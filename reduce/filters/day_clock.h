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

}  // namespace ovix::reduce
