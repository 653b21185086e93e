#pragma once

#include "core/string.h"

namespace ovix {

/// A point in time in UTC: units of 100 nanoseconds since the start of the year 1601. The host's zone plays no part.
/// Every 64-bit number of units is a time; arguments that lead beyond wrap around.
class OVIX_API CDateTime {
  public:
    static constexpr i64 TicksPerSecond = 10'000'000;
    /// Seconds from the start of 1601 to the start of 1970.
    static constexpr i64 SecondsToUnixEpoch = 11'644'473'600;

    /// The current time.
    CDateTime();
    /// The current time, then `Set(text)`.
    explicit CDateTime(const wchar_t* text);

    CDateTime& Now();

    /// Takes "DDD:HH:MM:SS.ffffff" (the year stays; the fraction may be left out), or an ISO 8601 date with or without
    /// a time ("2026-11-21", "2026-11-21T08:15:00.25Z"). Other text leaves the value as it was. Answers whether it
    /// fitted.
    bool Set(const wchar_t* text);

    /// Ticks since 1601; the only mode is 0.
    i64 GetTimestamp(int mode = 0) const;
    void SetTimestamp(i64 ticks, int mode = 0);

    /// From a day of the year, 1 being the first of January; the year stays. Days beyond the year, and 0, roll over.
    void SetYDHMS(int day, int hours, int minutes, int seconds, int milliseconds, int microseconds);
    void SetYYDHMS(int year, int day, int hours, int minutes, int seconds, int milliseconds, int microseconds);
    /// Month (1 to 12) and day of a day of the year; rolls over into the neighbouring years.
    static void GetDayInMonth(int& month, int& day, int year, int dayOfYear);
    int GetYear() const;

    /// "%j" the day of the year in three digits, "%(irig)" HH:MM:SS.mmmuuu, "%Y" "%m" "%d" "%H" "%M" "%S" as in
    /// `strftime`, "%f" six digits of microseconds, "%%" a percent sign; other codes stand as they are.
    CString Format(const wchar_t* format) const;

    friend bool operator==(const CDateTime&, const CDateTime&) = default;

  private:
    i64 ticks_;
};

/// The time stamp of Unix seconds and milliseconds, for `SetTimestamp`.
constexpr i64 UnixTimestamp(u32 seconds, u32 milliseconds) {
    return ((i64{seconds} + CDateTime::SecondsToUnixEpoch) * 1000 + milliseconds) * 10'000;
}

}  // namespace ovix
