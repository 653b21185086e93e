#include "reduce/filters/tomz_trailer.h"

#include <cstring>

namespace ovix::reduce::tomz {

namespace {

using namespace dunlin;
using namespace frame_values;
using V = SDunlinTrailer;

constexpr u32 kVersionAt = 4;
constexpr u32 kLengthAt = 6;
constexpr u32 kClockAt = 44;
constexpr u32 kIntegrationAt = 48;
constexpr u32 kFramePeriodAt = 52;
constexpr u32 kChecksumAt = 94;

/// 12 bits of sign and magnitude, in sixteenths of a kelvin from the freezing point.
float SensorKelvin(const u8* trailer, u32 offset) {
    const u16 word = LoadLittle<u16>(trailer + offset);
    const int magnitude = word & 0x7FF;
    return static_cast<float>((word & 0x800 ? -magnitude : magnitude) * 0.0625 + 273.15);
}

/// What the two variants do not share.
struct SLapwing {
    static double ClockHz(const u8* trailer) { return Megahertz(trailer, kClockAt) * 1e6; }
    static float Megahertz(const u8* trailer, u32 offset) {
        return static_cast<float>(LoadLittle<u32>(trailer + offset));
    }

    static constexpr SDunlinField kVideoPreset = Number<u8, &V::videoPreset>(20, L"VideoPreset", &kInteger);
    static constexpr SDunlinField kSensors[] = {
        Decoded<SensorKelvin, &V::sensorTemp, 0>(28, 2, L"SensorTemp[0]", &kFloat, L"K"),
        Decoded<SensorKelvin, &V::sensorTemp, 1>(24, 2, L"SensorTemp[1]", &kFloat, L"K"),
    };
    static constexpr SDunlinField kMasterClock =
        Decoded<Megahertz, &V::masterClock>(kClockAt, 4, L"MasterClock", &kFloat, L"MHz");
    static constexpr u32 kFilterPosition = 57;
    static constexpr u32 kTriggerInput = kLapwingTriggerInput;
};
struct SOlderWren {
    static double ClockHz(const u8* trailer) { return LoadLittle<float>(trailer + kClockAt); }

    static constexpr SDunlinField kVideoPreset = Bits<0, 4, &V::videoPresetLow>(20, L"VideoPreset", &kInteger);
    static constexpr SDunlinField kSensors[] = {
        Number<float, &V::sensorTemp, 0>(24, L"SensorTemp[0]", &kFloat, L"K"),
        Number<float, &V::sensorTemp, 1>(28, L"SensorTemp[1]", &kFloat, L"K"),
        Number<float, &V::sensorTemp, 2>(32, L"SensorTemp[2]", &kFloat, L"K"),
        Number<float, &V::sensorTemp, 3>(36, L"SensorTemp[3]", &kFloat, L"K"),
    };
    static constexpr SDunlinField kMasterClock =
        Number<float, &V::masterClock>(kClockAt, L"MasterClock", &kFloat, L"Hz");
    static constexpr u32 kFilterPosition = 56;
    static constexpr u32 kTriggerInput = 60;
};

/// The word counts clock ticks less one; the largest wraps to none.
template <class Variant>
float IntegrationTime(const u8* trailer, u32 offset) {
    const float ticks = static_cast<float>(LoadLittle<u32>(trailer + offset) + 1);
    return static_cast<float>(ticks / Variant::ClockHz(trailer) * 1e6);
}
template <class Variant>
float FrameRate(const u8* trailer, u32 offset) {
    return static_cast<float>(Variant::ClockHz(trailer) / static_cast<float>(LoadLittle<u32>(trailer + offset)));
}
u32 Flags(const u8* trailer, u32 offset) { return (trailer[offset] & 2u) | 1u; }

constexpr SDunlinField kClockFields[] = {
    Number<u64, &V::timeStamp>(8, L"TimeStamp", nullptr, L"µs"),
    Number<u32, &V::frameCounter>(16, L"FrameCounter"),
    Number<u8, &V::timeFlags>(61, L"TimeFlags"),
    Number<u16, &V::dayOfYear>(62, L"DayOfYear"),
    Number<u8, &V::hours>(64, L"Hours"),
    Number<u8, &V::minutes>(65, L"Minutes"),
    Number<u8, &V::seconds>(66, L"Seconds"),
    Number<u32, &V::microseconds>(67, L"Microseconds"),
    Number<u8, &V::year>(71, L"Year"),
};

template <class Variant>
constexpr SDunlinField kBeforeSensors[] = {
    Decoded<IntegrationTime<Variant>, &V::integrationExactTime>(kIntegrationAt, 4, L"IntegrationTime", &kFloat, L"µs"),
    Decoded<FrameRate<Variant>, &V::frameRate>(kFramePeriodAt, 4, L"FrameRate", &kFloat, L"Hz"),
    Variant::kVideoPreset,
    Number<u8, &V::numPresets>(21, L"NumPresets", &kInteger),
    Number<float, &V::detectorTemp>(40, L"DetectorTemp", &kFloat, L"K"),
};

template <class Variant>
constexpr SDunlinField kBehindSensors[] = {
    Variant::kMasterClock,
    Number<u8, &V::filterPosition>(Variant::kFilterPosition, L"FilterPosition", &kInteger),
    Bits<0, 1, &V::externalTrigger>(58, L"ExternalTrigger", &kFlag),
    Number<u8, &V::triggerInput>(Variant::kTriggerInput, L"TriggerInput", &kFlag),
    Bits<2, 1, &V::dataDisable>(58, L"DataDisable", &kFlag),
    Number<u8, &V::pageIndex>(23, L"PageIndex", &kInteger),
    Bits<3, 1, &V::lensChange>(58, L"LensChange", &kFlag),
    Number<u32, &V::lockinPeriod>(74, L"LockinPeriod", &kInteger),
    Number<u32, &V::lockinPhase>(78, L"LockinPhase", &kInteger),
    Bits<0, 1, &V::lockinMin>(82, L"LockinMin", &kFlag),
    Bits<1, 1, &V::lockinMax>(82, L"LockinMax", &kFlag),
    Bits<2, 3, &V::signalNumber>(82, L"SignalNumber", &kInteger),
    Number<u16, &V::lockinMean, 0>(84, L"LockinMeanValue[0]", &kInteger),
    Number<u16, &V::lockinMean, 1>(86, L"LockinMeanValue[1]", &kInteger),
    Number<u16, &V::lockinMean, 2>(88, L"LockinMeanValue[2]", &kInteger),
    Number<u16, &V::lockinMean, 3>(90, L"LockinMeanValue[3]", &kInteger),
};

/// No values of the frame.
constexpr SDunlinField kToldOnly[] = {
    Number<u16, &V::version>(kVersionAt, L"Version"),
    Number<u16, &V::length>(kLengthAt, L"Length", nullptr, L"words"),
    Bits<0, 4, &V::videoPresetLow>(20, L"VideoPresetLow"),
    Bits<4, 4, &V::videoPresetHigh>(20, L"VideoPresetHigh"),
    Number<u8, &V::activePreset>(kActivePreset, L"ActivePreset"),
    Decoded<Flags, &V::flags>(58, 1, L"Flags"),
    Number<u16, &V::lockinWord>(72, L"LockinWord"),
    Number<u16, &V::checksum>(kChecksumAt, L"Checksum"),
};

template <class Variant>
constexpr DunlinFields kParts[] = {kClockFields, kBeforeSensors<Variant>, Variant::kSensors, kBehindSensors<Variant>,
                                   kToldOnly};
static_assert(End(kParts<SLapwing>) == kSize && End(kParts<SOlderWren>) == kSize);

}  // namespace

constinit const DunlinLayout kLapwing = kParts<SLapwing>;
constinit const DunlinLayout kOlderWren = kParts<SOlderWren>;
constinit const DunlinFields kClock = kClockFields;

bool HasSignature(const u8* trailer) { return std::memcmp(trailer, "TOMZ", 4) == 0; }

std::array<SExpectedWord, 3> ExpectedWords(const u8* trailer) {
    u16 sum = 0;
    for (u32 at = 0; at < kChecksumAt; at += 2) sum = static_cast<u16>(sum + LoadLittle<u16>(trailer + at));
    return {{{kVersionAt, kVersion, L"the trailer's version"},
             {kLengthAt, kSize / 2, L"the trailer's length in words"},
             {kChecksumAt, sum, L"the checksum of the trailer"}}};
}

}  // namespace ovix::reduce::tomz
