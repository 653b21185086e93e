#pragma once

#include <initializer_list>
#include <vector>

#include "core/core.h"

namespace ovix::app {

// What the frames of all families are written with: numbers at fixed places, and the time.

/// Numbers at fixed places of a header or record, in the camera's byte order.
class CFields {
  public:
    CFields(u8* bytes, bool swapped) : bytes_(bytes), swapped_(swapped) {}
    template <Number T>
    void Put(u32 offset, T value) {
        swapped_ ? StoreBig(bytes_ + offset, value) : StoreLittle(bytes_ + offset, value);
    }
    template <Number T>
    void PutRow(u32 offset, std::initializer_list<T> values) {
        for (T value : values) {
            Put(offset, value);
            offset += sizeof(T);
        }
    }

  private:
    u8* bytes_;
    bool swapped_;
};

/// Counts of 16 bits, one behind the other, behind what is there.
inline void AppendCounts(std::vector<u8>& bytes, const std::vector<u16>& counts, bool swapped) {
    const std::size_t start = bytes.size();
    bytes.resize(start + counts.size() * 2);
    u8* next = bytes.data() + start;
    for (std::size_t i = 0; i < counts.size(); ++i, next += 2)
        swapped ? StoreBig(next, counts[i]) : StoreLittle(next, counts[i]);
}
inline std::vector<u8> CountBytes(const std::vector<u16>& counts, bool swapped) {
    std::vector<u8> bytes;
    AppendCounts(bytes, counts, swapped);
    return bytes;
}

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
