#include "reduce/filters/tomz_trailer.h"

namespace ovix::reduce::tomz {

namespace {

using namespace frame_values;
using F = SDunlinFrame;

constexpr u16 kVersion = 1;  ///< the one that is known
constexpr u32 kVersionAt = 4;
constexpr u32 kLengthAt = 6;
constexpr u32 kIntegrationAt = 48;
constexpr u32 kFramePeriodAt = 52;
constexpr u32 kChecksumAt = 94;

/// 12 bits of sign and magnitude, in sixteenths of a kelvin from the freezing point.
float SensorKelvin(const u8* bytes) {
    const u16 word = LoadLittle<u16>(bytes);
    const int magnitude = word & 0x7FF;
    return static_cast<float>((word & 0x800 ? -magnitude : magnitude) * 0.0625 + 273.15);
}

/// Lapwing has whole megahertz, and older Wren cameras a float of hertz.
float Megahertz(const u8* bytes) { return static_cast<float>(LoadLittle<u32>(bytes)); }
template <EVariant kVariant>
double ClockHz(const u8* trailer) {
    if constexpr (kVariant == Lapwing) return Megahertz(trailer + kMasterClock) * 1e6;
    return LoadLittle<float>(trailer + kMasterClock);
}
template <auto kOfTrailer, u32 kAt>
float At(const u8* bytes) {
    return kOfTrailer(bytes - kAt);
}

u32 Flags(const u8* bytes) { return (*bytes & 2u) | 1u; }  // basic data is there

template <u32 kFirst, u32 kCount>
u8 Bits(const u8* bytes) {
    return static_cast<u8>(*bytes >> kFirst & ((1u << kCount) - 1));
}

/// For what is no member of the Dunlin frame.
constexpr TKeptField<F> Shown(const STableField& field) { return {field, nullptr}; }

constexpr TKeptField<F> kTable[] = {
    Shown({kIntegrationAt, 4, L"IntegrationTime", kFloat, PlainText<At<IntegrationTime<Lapwing>, kIntegrationAt>>,
           L"µs", Lapwing}),
    Shown({kIntegrationAt, 4, L"IntegrationTime", kFloat, PlainText<At<IntegrationTime<OlderWren>, kIntegrationAt>>,
           L"µs", OlderWren}),
    Decoded<At<FrameRate<Lapwing>, kFramePeriodAt>, &F::frameRate>(kFramePeriodAt, 4, L"FrameRate", kFloat, L"Hz",
                                                                   Lapwing),
    Decoded<At<FrameRate<OlderWren>, kFramePeriodAt>, &F::frameRate>(kFramePeriodAt, 4, L"FrameRate", kFloat, L"Hz",
                                                                     OlderWren),
    Shown({kVideoPreset, 1, L"VideoPreset", kInteger, PlainText<LoadLittle<u8>>, L"", Lapwing}),
    Shown({kVideoPreset, 1, L"VideoPreset", kInteger, PlainText<Bits<0, 4>>, L"", OlderWren}),
    Number<u8, &F::numPresets>(21, L"NumPresets", kInteger),
    Number<float, &F::detectorTemp>(40, L"DetectorTemp", kFloat, L"K"),
    Decoded<SensorKelvin, &F::sensorTemp, 0>(28, 2, L"SensorTemp[0]", kFloat, L"K", Lapwing),
    Decoded<SensorKelvin, &F::sensorTemp, 1>(24, 2, L"SensorTemp[1]", kFloat, L"K", Lapwing),
    Number<float, &F::sensorTemp, 0>(24, L"SensorTemp[0]", kFloat, L"K", OlderWren),
    Number<float, &F::sensorTemp, 1>(28, L"SensorTemp[1]", kFloat, L"K", OlderWren),
    Number<float, &F::sensorTemp, 2>(32, L"SensorTemp[2]", kFloat, L"K", OlderWren),
    Number<float, &F::sensorTemp, 3>(36, L"SensorTemp[3]", kFloat, L"K", OlderWren),
    Decoded<Megahertz, &F::masterClock>(kMasterClock, 4, L"MasterClock", kFloat, L"MHz", Lapwing),
    Number<float, &F::masterClock>(kMasterClock, L"MasterClock", kFloat, L"Hz", OlderWren),
    Number<u8, &F::filterPosition>(57, L"FilterPosition", kInteger, L"", Lapwing),
    Number<u8, &F::filterPosition>(56, L"FilterPosition", kInteger, L"", OlderWren),
    Decoded<Bits<0, 1>, &F::externalTrigger>(kFlags, 1, L"ExternalTrigger", kFlag),
    Number<u8, &F::triggerInput>(kLapwingTriggerInput, L"TriggerInput", kFlag, L"", Lapwing),
    Number<u8, &F::triggerInput>(60, L"TriggerInput", kFlag, L"", OlderWren),
    Decoded<Bits<2, 1>, &F::dataDisable>(kFlags, 1, L"DataDisable", kFlag),
    Number<u8, &F::pageIndex>(23, L"PageIndex", kInteger),
    Decoded<Bits<3, 1>, &F::lensChange>(kFlags, 1, L"LensChange", kFlag),
    Number<u32, &F::lockinPeriod>(74, L"LockinPeriod", kInteger),
    Number<u32, &F::lockinPhase>(78, L"LockinPhase", kInteger),
    Decoded<Bits<0, 1>, &F::lockinMin>(kLockinBits, 1, L"LockinMin", kFlag),
    Decoded<Bits<1, 1>, &F::lockinMax>(kLockinBits, 1, L"LockinMax", kFlag),
    Decoded<Bits<2, 3>, &F::signalNumber>(kLockinBits, 1, L"SignalNumber", kInteger),
    Number<u16, &F::lockinMean, 0>(84, L"LockinMeanValue[0]", kInteger),
    Number<u16, &F::lockinMean, 1>(86, L"LockinMeanValue[1]", kInteger),
    Number<u16, &F::lockinMean, 2>(88, L"LockinMeanValue[2]", kInteger),
    Number<u16, &F::lockinMean, 3>(90, L"LockinMeanValue[3]", kInteger),
    // No values of the frame.
    Number<u64, &F::timeStamp>(kTimeStamp, L"TimeStamp", kDescribedOnly, L"µs"),
    Number<u32, &F::frameCounter>(kFrameCounter, L"FrameCounter"),
    Decoded<Bits<0, 4>, &F::videoPresetLow>(kVideoPreset, 1, L"VideoPresetLow"),
    Decoded<Bits<4, 4>, &F::videoPresetHigh>(kVideoPreset, 1, L"VideoPresetHigh"),
    Number<u8, &F::activePreset>(kActivePreset, L"ActivePreset"),
    Decoded<Flags, &F::flags>(kFlags, 1, L"Flags"),
    Number<u16, &F::lockinWord>(72, L"LockinWord"),
    Shown({kVersionAt, 2, L"Version", kDescribedOnly, PlainText<LoadLittle<u16>>}),
    Shown({kLengthAt, 2, L"Length", kDescribedOnly, PlainText<LoadLittle<u16>>, L"words"}),
    Shown({kChecksumAt, 2, L"Checksum", kDescribedOnly, PlainText<LoadLittle<u16>>}),
};
static_assert(EndOf(kTable) == kSize);

}  // namespace

constinit const DunlinFields kFields = kTable;

template <EVariant kVariant>
float IntegrationTime(const u8* trailer) {
    const float ticks = static_cast<float>(LoadLittle<u32>(trailer + kIntegrationAt) + 1);
    return static_cast<float>(ticks / ClockHz<kVariant>(trailer) * 1e6);
}
template <EVariant kVariant>
float FrameRate(const u8* trailer) {
    const float period = static_cast<float>(LoadLittle<u32>(trailer + kFramePeriodAt));
    return static_cast<float>(ClockHz<kVariant>(trailer) / period);
}
template float IntegrationTime<Lapwing>(const u8*);
template float IntegrationTime<OlderWren>(const u8*);
template float FrameRate<OlderWren>(const u8*);

void Describe(TArray<SFrameField>& fields, const u8* trailer, u64 offset, EVariant variant) {
    DescribeFields(fields, kFields, trailer, offset, variant);
    DescribeFields(fields, time_code::kFields, trailer + kTimeCode, offset + kTimeCode);
}

std::array<SExpectedWord, 3> ExpectedWords(const u8* trailer) {
    u16 sum = 0;
    for (u32 at = 0; at < kChecksumAt; at += 2) sum = static_cast<u16>(sum + LoadLittle<u16>(trailer + at));
    return {{{kVersionAt, kVersion, L"the trailer's version"},
             {kLengthAt, kSize / 2, L"the trailer's length in words"},
             {kChecksumAt, sum, L"the checksum of the trailer"}}};
}

}  // namespace ovix::reduce::tomz
