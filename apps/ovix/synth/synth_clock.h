#pragma once

#include "core/core.h"

namespace ovix::app {

/// When a synthesised frame was taken, in the forms in which cameras tell it: 20 ms lie between frames, and the first
/// one is of 15 January 2026, 12:00 UTC.
struct SSynthTime {
    static constexpr u32 kFirstSecond = 1'768'478'400;  ///< since 1970
    static constexpr u32 kMillisecondsPerFrame = 20;

    explicit constexpr SSynthTime(u64 frame) : milliseconds(frame * kMillisecondsPerFrame) {}

    u64 milliseconds;  ///< since the first frame

    constexpr u64 UnixMilliseconds() const { return u64{kFirstSecond} * 1000 + milliseconds; }
    /// For cameras that count as `CDateTime` does.
    constexpr u64 MicrosecondsSince1601() const {
        return UnixMilliseconds() * 1000 + u64{CDateTime::SecondsToUnixEpoch} * 1'000'000;
    }
    // The time code. A stream that goes on beyond the year keeps counting its days.
    constexpr u16 DayOfYear() const { return static_cast<u16>(15 + SinceNewDay() / 86'400'000); }
    constexpr u8 Hours() const { return static_cast<u8>(SinceNewDay() / 3'600'000 % 24); }
    constexpr u8 Minutes() const { return static_cast<u8>(SinceNewDay() / 60'000 % 60); }
    constexpr u8 Seconds() const { return static_cast<u8>(SinceNewDay() / 1000 % 60); }
    constexpr u32 Microseconds() const { return static_cast<u32>(SinceNewDay() % 1000 * 1000); }
    static constexpr u16 kYear = 2026;

  private:
    constexpr u64 SinceNewDay() const { return 43'200'000 + milliseconds; }
};

}  // namespace ovix::app
