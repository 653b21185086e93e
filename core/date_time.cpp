#include "core/date_time.h"

#include <chrono>
#include <cwchar>
#include <string>

namespace ovix {

namespace {

using namespace std::chrono;
using Ticks = duration<i64, std::ratio<1, CDateTime::TicksPerSecond>>;

constexpr i64 kTicksPerDay = 86'400 * CDateTime::TicksPerSecond;
constexpr i64 kDaysToUnixEpoch = CDateTime::SecondsToUnixEpoch / 86'400;

// The calendar repeats itself every 400 years. That lets any year through <chrono>, whose own years have 16 bits.
constexpr i64 kYearsOfCycle = 400;
constexpr i64 kDaysOfCycle = 146'097;

struct SDivision {
    i64 quotient;
    i64 remainder;  ///< never negative
};
constexpr SDivision FloorDivide(i64 value, i64 divisor) {
    const i64 below = value % divisor < 0 ? 1 : 0;
    return {value / divisor - below, value % divisor + below * divisor};
}

/// Days from the start of 1970 to the first of January.
i64 JanuaryFirst(i64 year) {
    const auto [cycle, rest] = FloorDivide(year, kYearsOfCycle);
    const sys_days first{std::chrono::year{static_cast<int>(rest)} / January / 1};
    return first.time_since_epoch().count() + cycle * kDaysOfCycle;
}

struct SDate {
    explicit SDate(i64 daysSince1970) {
        const auto [cycle, rest] = FloorDivide(daysSince1970, kDaysOfCycle);
        const year_month_day date{sys_days{days{rest}}};
        year = static_cast<int>(date.year()) + cycle * kYearsOfCycle;
        month = static_cast<int>(static_cast<unsigned>(date.month()));
        day = static_cast<int>(static_cast<unsigned>(date.day()));
    }

    i64 year;
    int month;
    int day;
};

/// Any 64-bit number of ticks in parts.
struct SParts {
    explicit SParts(i64 ticks)
        : days(FloorDivide(ticks, kTicksPerDay).quotient - kDaysToUnixEpoch),
          date(days),
          sinceMidnight(FloorDivide(ticks, kTicksPerDay).remainder) {}

    i64 Hours() const { return duration_cast<hours>(sinceMidnight).count(); }
    i64 Minutes() const { return duration_cast<minutes>(sinceMidnight).count() % 60; }
    i64 Seconds() const { return duration_cast<seconds>(sinceMidnight).count() % 60; }
    i64 Microseconds() const { return duration_cast<microseconds>(sinceMidnight).count() % 1'000'000; }

    i64 days;  ///< since the start of 1970
    SDate date;
    Ticks sinceMidnight;
};

/// Times beyond what 64 bits hold, some 29,000 years away, wrap around.
i64 TicksOf(i64 daysSince1970, i64 seconds, i64 ticks) {
    const u64 days = static_cast<u64>(daysSince1970 + kDaysToUnixEpoch);
    return static_cast<i64>(days * kTicksPerDay + static_cast<u64>(seconds) * CDateTime::TicksPerSecond +
                            static_cast<u64>(ticks));
}

/// Reads the parts of a written time one after the other.
class CReader {
  public:
    explicit CReader(const wchar_t* text) : next_(text) {}

    bool Is(wchar_t c) {
        if (*next_ != c) return false;
        ++next_;
        return true;
    }
    bool AtEnd() const { return !*next_; }
    /// From `least` to `most` digits.
    bool Digits(int& value, int least, int most) {
        int n = 0;
        value = 0;
        for (; n < most && *next_ >= L'0' && *next_ <= L'9'; ++n) value = value * 10 + (*next_++ - L'0');
        return n >= least;
    }
    /// A fraction of a second as ticks; nothing there is zero.
    bool Fraction(i64& ticks) {
        ticks = 0;
        if (!Is(L'.') && !Is(L',')) return true;
        if (*next_ < L'0' || *next_ > L'9') return false;
        i64 unit = CDateTime::TicksPerSecond / 10;
        for (; *next_ >= L'0' && *next_ <= L'9'; ++next_, unit /= 10) ticks += (*next_ - L'0') * unit;
        return true;
    }
    /// Hours, minutes, seconds and fraction as ticks since midnight. A minute may have a leap second, and 24:00 is the
    /// end of the day.
    bool TimeOfDay(i64& ticks, bool secondsNeeded) {
        int h = 0, m = 0, s = 0;
        i64 fraction = 0;
        if (!Digits(h, 1, 2) || !Is(L':') || !Digits(m, 2, 2) || m > 59) return false;
        if (Is(L':')) {
            if (!Digits(s, 2, 2) || s > 60 || !Fraction(fraction)) return false;
        } else if (secondsNeeded) {
            return false;
        }
        ticks = ((i64{h} * 60 + m) * 60 + s) * CDateTime::TicksPerSecond + fraction;
        return h < 24 || ticks == kTicksPerDay;
    }
    /// "Z" or nothing is UTC; "+hh:mm" and "-hh:mm" lie ahead of it and behind it.
    bool Zone(i64& aheadTicks) {
        aheadTicks = 0;
        if (AtEnd() || Is(L'Z') || Is(L'z')) return true;
        const bool behind = *next_ == L'-';
        int h = 0, m = 0;
        if ((!Is(L'+') && !Is(L'-')) || !Digits(h, 2, 2) || h > 23) return false;
        Is(L':');
        if (!AtEnd() && (!Digits(m, 2, 2) || m > 59)) return false;
        aheadTicks = (i64{h} * 60 + m) * 60 * CDateTime::TicksPerSecond * (behind ? -1 : 1);
        return true;
    }

  private:
    const wchar_t* next_;
};

bool ParseDayOfYear(const wchar_t* text, i64 year, i64& ticks) {
    CReader reader(text);
    int day = 0;
    i64 time = 0;
    if (!reader.Digits(day, 1, 3) || !reader.Is(L':') || !reader.TimeOfDay(time, true) || !reader.AtEnd()) return false;
    ticks = TicksOf(JanuaryFirst(year) + day - 1, 0, time);
    return true;
}

bool ParseIso8601(const wchar_t* text, i64& ticks) {
    CReader reader(text);
    int y = 0, m = 0, d = 0;
    if (!reader.Digits(y, 4, 4) || !reader.Is(L'-') || !reader.Digits(m, 2, 2) || !reader.Is(L'-') ||
        !reader.Digits(d, 2, 2)) {
        return false;
    }
    const year_month_day date{year{y}, month{static_cast<unsigned>(m)}, day{static_cast<unsigned>(d)}};
    i64 time = 0, ahead = 0;
    if (!date.ok()) return false;
    if (reader.Is(L'T') || reader.Is(L't') || reader.Is(L' ')) {
        if (!reader.TimeOfDay(time, false) || !reader.Zone(ahead)) return false;
    }
    if (!reader.AtEnd()) return false;
    ticks = TicksOf(sys_days{date}.time_since_epoch().count(), 0, time - ahead);
    return true;
}

std::wstring Padded(i64 value, std::size_t digits) {
    std::wstring text = std::to_wstring(value < 0 ? -value : value);
    if (text.size() < digits) text.insert(0, digits - text.size(), L'0');
    return value < 0 ? L'-' + text : text;
}

/// What a format code stands for; empty for one that is none.
std::wstring Part(const SParts& parts, wchar_t code) {
    switch (code) {
        case L'j':
            return Padded(parts.days - JanuaryFirst(parts.date.year) + 1, 3);
        case L'Y':
            return Padded(parts.date.year, 4);
        case L'm':
            return Padded(parts.date.month, 2);
        case L'd':
            return Padded(parts.date.day, 2);
        case L'H':
            return Padded(parts.Hours(), 2);
        case L'M':
            return Padded(parts.Minutes(), 2);
        case L'S':
            return Padded(parts.Seconds(), 2);
        case L'f':
            return Padded(parts.Microseconds(), 6);
        case L'%':
            return L"%";
        default:
            return {};
    }
}

}  // namespace

CDateTime::CDateTime() { Now(); }
CDateTime::CDateTime(const wchar_t* text) : CDateTime() { Set(text); }

CDateTime& CDateTime::Now() {
    ticks_ = (duration_cast<Ticks>(system_clock::now().time_since_epoch()) + seconds{SecondsToUnixEpoch}).count();
    return *this;
}

bool CDateTime::Set(const wchar_t* text) {
    return text && (ParseDayOfYear(text, GetYear(), ticks_) || ParseIso8601(text, ticks_));
}

i64 CDateTime::GetTimestamp(int) const { return ticks_; }
void CDateTime::SetTimestamp(i64 ticks, int) { ticks_ = ticks; }

void CDateTime::SetYDHMS(int day, int hours, int minutes, int seconds, int milliseconds, int microseconds) {
    SetYYDHMS(GetYear(), day, hours, minutes, seconds, milliseconds, microseconds);
}

void CDateTime::SetYYDHMS(int year, int day, int hours, int minutes, int seconds, int milliseconds, int microseconds) {
    ticks_ = TicksOf(JanuaryFirst(year) + day - 1, (i64{hours} * 60 + minutes) * 60 + seconds,
                     (i64{milliseconds} * 1000 + microseconds) * 10);
}

void CDateTime::GetDayInMonth(int& month, int& day, int year, int dayOfYear) {
    const SDate date(JanuaryFirst(year) + dayOfYear - 1);
    month = date.month;
    day = date.day;
}

int CDateTime::GetYear() const { return static_cast<int>(SParts(ticks_).date.year); }

CString CDateTime::Format(const wchar_t* format) const {
    const SParts parts(ticks_);
    std::wstring text;
    for (const wchar_t* p = format; *p; ++p) {
        const std::wstring part = *p == L'%' ? Part(parts, p[1]) : std::wstring();
        if (!part.empty()) {
            text += part;
            ++p;
        } else if (std::wcsncmp(p, L"%(irig)", 7) == 0) {
            text += Part(parts, L'H') + L':' + Part(parts, L'M') + L':' + Part(parts, L'S') + L'.' + Part(parts, L'f');
            p += 6;
        } else {
            text += *p;
        }
    }
    return CString(text.c_str(), static_cast<int>(text.size()));
}

}  // namespace ovix
