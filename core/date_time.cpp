#include "core/date_time.h"

#include <chrono>
#include <cwchar>
#include <string>

#include "core/numbers.h"

namespace ovix {

namespace {

using namespace std::chrono;
using Ticks = duration<i64, std::ratio<1, CDateTime::TicksPerSecond>>;

constexpr Ticks kEpochOffset = seconds{CDateTime::SecondsToUnixEpoch};

sys_days JanuaryFirst(int year) { return sys_days{std::chrono::year{year} / January / 1}; }

/// A time stamp in parts. Any 64-bit value of ticks fits.
struct SParts {
    explicit SParts(i64 ticks) {
        const i64 day = floor<days>(Ticks{ticks}).count();
        date = sys_days{days{day - floor<days>(seconds{CDateTime::SecondsToUnixEpoch}).count()}};
        sinceMidnight = Ticks{ticks - day * TicksPerDay};
    }
    static constexpr i64 TicksPerDay = 86'400 * CDateTime::TicksPerSecond;

    int Hours() const { return static_cast<int>(duration_cast<hours>(sinceMidnight).count()); }
    int Minutes() const { return static_cast<int>(duration_cast<minutes>(sinceMidnight).count() % 60); }
    int Seconds() const { return static_cast<int>(duration_cast<seconds>(sinceMidnight).count() % 60); }
    int Microseconds() const {
        return static_cast<int>(duration_cast<microseconds>(sinceMidnight).count() % 1'000'000);
    }

    sys_days date;
    Ticks sinceMidnight;
};

i64 TicksOf(sys_days date, i64 hours, i64 minutes, i64 seconds, i64 microseconds) {
    const i64 wholeSeconds = (i64{date.time_since_epoch().count()} * 24 + hours) * 3600 + minutes * 60 + seconds +
                             CDateTime::SecondsToUnixEpoch;
    return wholeSeconds * CDateTime::TicksPerSecond + microseconds * 10;
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
    /// Hours, minutes, seconds and fraction as ticks since midnight.
    bool TimeOfDay(i64& ticks, bool secondsNeeded) {
        int h = 0, m = 0, s = 0;
        i64 fraction = 0;
        if (!Digits(h, 1, 2) || h > 24 || !Is(L':') || !Digits(m, 2, 2) || m > 59) return false;
        if (Is(L':')) {
            if (!Digits(s, 2, 2) || s > 60 || !Fraction(fraction)) return false;
        } else if (secondsNeeded) {
            return false;
        }
        ticks = ((i64{h} * 60 + m) * 60 + s) * CDateTime::TicksPerSecond + fraction;
        return true;
    }
    /// "Z" or nothing is UTC; "+hh:mm" and "-hh:mm" lie ahead of it and behind it.
    bool Zone(i64& aheadTicks) {
        aheadTicks = 0;
        if (AtEnd() || Is(L'Z') || Is(L'z')) return true;
        const bool behind = *next_ == L'-';
        int h = 0, m = 0;
        if ((!Is(L'+') && !Is(L'-')) || !Digits(h, 2, 2)) return false;
        Is(L':');
        if (!AtEnd() && !Digits(m, 2, 2)) return false;
        aheadTicks = (i64{h} * 60 + m) * 60 * CDateTime::TicksPerSecond * (behind ? -1 : 1);
        return true;
    }

  private:
    const wchar_t* next_;
};

bool ParseDayOfYear(const wchar_t* text, int year, i64& ticks) {
    CReader reader(text);
    int day = 0;
    i64 time = 0;
    if (!reader.Digits(day, 1, 3) || !reader.Is(L':') || !reader.TimeOfDay(time, true) || !reader.AtEnd()) return false;
    ticks = TicksOf(JanuaryFirst(year) + days{day - 1}, 0, 0, 0, 0) + time;
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
    ticks = TicksOf(sys_days{date}, 0, 0, 0, 0) + time - ahead;
    return true;
}

std::wstring Padded(int value, std::size_t digits) {
    std::wstring text = std::to_wstring(value);
    if (text.size() < digits) text.insert(0, digits - text.size(), L'0');
    return text;
}

}  // namespace

CDateTime::CDateTime() { Now(); }
CDateTime::CDateTime(const wchar_t* text) : CDateTime() { Set(text); }

CDateTime& CDateTime::Now() {
    ticks_ = (duration_cast<Ticks>(system_clock::now().time_since_epoch()) + kEpochOffset).count();
    return *this;
}

bool CDateTime::Set(const wchar_t* text) {
    return ParseDayOfYear(text, GetYear(), ticks_) || ParseIso8601(text, ticks_);
}

i64 CDateTime::GetTimestamp(int) const { return ticks_; }
void CDateTime::SetTimestamp(i64 ticks, int) { ticks_ = ticks; }

void CDateTime::SetYDHMS(int day, int hours, int minutes, int seconds, int milliseconds, int microseconds) {
    SetYYDHMS(GetYear(), day, hours, minutes, seconds, milliseconds, microseconds);
}

void CDateTime::SetYYDHMS(int year, int day, int hours, int minutes, int seconds, int milliseconds, int microseconds) {
    const sys_days date = JanuaryFirst(year) + days{i64{day} - 1};
    ticks_ = TicksOf(date, hours, minutes, seconds, i64{milliseconds} * 1000 + microseconds);
}

void CDateTime::GetDayInMonth(int& month, int& day, int year, int dayOfYear) {
    const year_month_day date{JanuaryFirst(year) + days{i64{dayOfYear} - 1}};
    month = static_cast<int>(static_cast<unsigned>(date.month()));
    day = static_cast<int>(static_cast<unsigned>(date.day()));
}

int CDateTime::GetYear() const { return static_cast<int>(year_month_day{SParts(ticks_).date}.year()); }

CString CDateTime::Format(const wchar_t* format) const {
    const SParts parts(ticks_);
    const year_month_day date{parts.date};
    const int year = static_cast<int>(date.year());
    std::wstring text;
    for (const wchar_t* p = format; *p; ++p) {
        if (*p != L'%') {
            text += *p;
            continue;
        }
        if (std::wcsncmp(p, L"%(irig)", 7) == 0) {
            text += Padded(parts.Hours(), 2) + L':' + Padded(parts.Minutes(), 2) + L':' + Padded(parts.Seconds(), 2) +
                    L'.' + Padded(parts.Microseconds(), 6);
            p += 6;
            continue;
        }
        switch (*++p) {
            case L'j':
                text += Padded(static_cast<int>((parts.date - JanuaryFirst(year)).count()) + 1, 3);
                break;
            case L'Y':
                text += Padded(year, 4);
                break;
            case L'm':
                text += Padded(static_cast<int>(static_cast<unsigned>(date.month())), 2);
                break;
            case L'd':
                text += Padded(static_cast<int>(static_cast<unsigned>(date.day())), 2);
                break;
            case L'H':
                text += Padded(parts.Hours(), 2);
                break;
            case L'M':
                text += Padded(parts.Minutes(), 2);
                break;
            case L'S':
                text += Padded(parts.Seconds(), 2);
                break;
            case L'f':
                text += Padded(parts.Microseconds(), 6);
                break;
            case L'%':
                text += L'%';
                break;
            default:
                text += L'%';
                --p;
                break;
        }
    }
    return CString(text.c_str(), static_cast<int>(text.size()));
}

}  // namespace ovix
