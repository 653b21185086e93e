#pragma once

#include <chrono>
#include <ratio>

#include "core/core.h"

namespace ovix::measure {

/// A point in time in UTC, in the steps of 100 ns in which files hold it.
using Time = std::chrono::sys_time<std::chrono::duration<i64, std::ratio<1, CDateTime::TicksPerSecond>>>;

inline Time TimeOf(const CDateTime& time) {
    return Time(Time::duration(time.GetTimestamp() - CDateTime::SecondsToUnixEpoch * CDateTime::TicksPerSecond));
}

}  // namespace ovix::measure
