#include "apps/ovix/synth/tomz_trailer.h"

#include "apps/ovix/synth/byte_fields.h"
#include "apps/ovix/synth/synth_clock.h"

namespace ovix::app {
namespace {

constexpr u32 kTrailerBytes = 96;
constexpr u32 kChecksumAt = 94;
constexpr u32 kClockMegahertz = 40;
constexpr u32 kIntegrationTicks = kClockMegahertz * 1000;
constexpr u32 kFrameTicks = kClockMegahertz * 1000 * SSynthTime::kMillisecondsPerFrame;

/// Degrees Celsius in sixteenths, of a value that is not below 0.
u16 SensorWord(double celsius) { return static_cast<u16>(celsius * 16); }

void PutLapwing(CFields& trailer) {
    trailer.Put<u16>(24, SensorWord(31.5));
    trailer.Put<u16>(28, SensorWord(24.25));
    trailer.Put<u32>(44, kClockMegahertz);
    trailer.Put<u8>(57, 1);  // filter position
}

void PutOlderWren(CFields& trailer) {
    trailer.PutRow<float>(24, {297.4f, 304.65f, 301.15f, 299.0f});
    trailer.Put<float>(44, kClockMegahertz * 1e6f);
    trailer.Put<u8>(56, 1);  // filter position
}

u16 Checksum(const u8* trailer) {
    u16 sum = 0;
    for (u32 at = 0; at < kChecksumAt; at += 2) sum = static_cast<u16>(sum + LoadLittle<u16>(trailer + at));
    return sum;
}

}  // namespace

void AppendTomzTrailer(std::vector<u8>& picture, u16 width, u64 frame, ETomzVariant variant) {
    const std::size_t start = picture.size();
    const std::size_t line = 2 * std::size_t{width};
    picture.resize(start + (kTrailerBytes + line - 1) / line * line);
    const SSynthTime time(frame);
    CFields trailer(picture.data() + start, false);
    trailer.PutRow<u8>(0, {'T', 'O', 'M', 'Z'});
    trailer.PutRow<u16>(4, {1, kTrailerBytes / 2});
    trailer.Put<u64>(8, time.MicrosecondsSince1601());
    trailer.Put<u32>(16, static_cast<u32>(frame));
    trailer.Put<u8>(21, 1);  // presets
    trailer.Put<float>(40, 77.0f);
    trailer.PutRow<u32>(48, {kIntegrationTicks - 1, kFrameTicks});
    trailer.Put<u16>(62, time.DayOfYear());
    trailer.PutRow<u8>(64, {time.Hours(), time.Minutes(), time.Seconds()});
    trailer.Put<u32>(67, time.Microseconds());
    trailer.Put<u8>(71, SSynthTime::kYear - 2000);
    variant == ETomzVariant::Lapwing ? PutLapwing(trailer) : PutOlderWren(trailer);
    trailer.Put<u16>(kChecksumAt, Checksum(picture.data() + start));
}

}  // namespace ovix::app
