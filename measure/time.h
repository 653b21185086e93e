#pragma once

#include <chrono>
#include <ratio>
#include <string>

#include "core/core.h"

namespace ovix::measure {

/// A point in time in UTC, in the steps of 100 ns in which files hold it.
using Time = std::chrono::sys_time<std::chrono::duration<i64, std::ratio<1, CDateTime::TicksPerSecond>>>;

/// Files hold any 64-bit number: a time before the range of `Time` wraps around.
inline Time TimeOf(const CDateTime& time) {
    const u64 ticks = static_cast<u64>(time.GetTimestamp());
    return Time(Time::duration(static_cast<i64>(ticks - static_cast<u64>(CDateTime::SecondsToUnixEpoch) *
                                                            static_cast<u64>(CDateTime::TicksPerSecond))));
}

/// "2026-11-21T08:15:00.250000Z".
inline std::string TimeText(Time time) {
    CDateTime text;
    text.SetTimestamp(time.time_since_epoch().count() + CDateTime::SecondsToUnixEpoch * CDateTime::TicksPerSecond);
    return text.Format(L"%Y-%m-%dT%H:%M:%S.%fZ").GetUTF8();
}

}  // namespace ovix::measure
