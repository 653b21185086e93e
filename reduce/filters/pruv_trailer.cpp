#include "reduce/filters/pruv_trailer.h"

#include <cstring>

namespace ovix::reduce::pruv {

namespace {

using namespace dunlin;
using namespace frame_values;
using V = SDunlinTrailer;

constexpr char kSignature[kSignatureSize + 1] = "PRUV";

constexpr SDunlinField kClockFields[] = {
    Number<u64, &V::timeStamp>(6, L"TimeStamp", nullptr, L"µs"),
    Number<u64, &V::frameCounter>(14, L"FrameCounter"),
    Number<u8, &V::timeFlags>(69, L"TimeFlags"),
    Number<u16, &V::dayOfYear>(70, L"DayOfYear"),
    Number<u8, &V::hours>(72, L"Hours"),
    Number<u8, &V::minutes>(73, L"Minutes"),
    Number<u8, &V::seconds>(74, L"Seconds"),
    Number<u32, &V::microseconds>(75, L"Microseconds"),
    Number<u8, &V::year>(79, L"Year"),
};

constexpr SDunlinField kValues[] = {
    Number<float, &V::integrationExactTime>(54, L"IntegrationTime", &kFloat, L"µs"),
    Number<float, &V::frameRate>(58, L"FrameRate", &kFloat, L"Hz"),
    Number<u16, &V::videoPresetLow>(24, L"VideoPreset", &kInteger),
    Number<u16, &V::numPresets>(22, L"NumPresets", &kInteger),
    Number<float, &V::detectorTemp>(30, L"DetectorTemp", &kFloat, L"K"),
    Number<float, &V::sensorTemp, 0>(34, L"SensorTemp[0]", &kFloat, L"K"),
    Number<float, &V::sensorTemp, 1>(38, L"SensorTemp[1]", &kFloat, L"K"),
    Number<float, &V::sensorTemp, 2>(42, L"SensorTemp[2]", &kFloat, L"K"),
    Number<float, &V::sensorTemp, 3>(46, L"SensorTemp[3]", &kFloat, L"K"),
    Number<float, &V::masterClock>(50, L"MasterClock", &kFloat, L"Hz"),
    Number<u8, &V::filterPosition>(62, L"FilterPosition", &kInteger),
    Number<u8, &V::externalTrigger>(63, L"ExternalTrigger", &kFlag),
    Number<u8, &V::triggerInput>(kTriggerInput, L"TriggerInput", &kFlag),
    Number<u8, &V::dataDisable>(kDataDisable, L"DataDisable", &kFlag),
    Number<u8, &V::pageIndex>(65, L"PageIndex", &kInteger),
    Number<u8, &V::lensChange>(66, L"LensChange", &kFlag),
    Number<u8, &V::inputSignalGrabbed>(67, L"InputSignalGrabb", &kFlag),
    Number<u32, &V::lockinPeriod>(82, L"LockinPeriod", &kInteger),
    Number<u32, &V::lockinPhase>(86, L"LockinPhase", &kInteger),
    Number<u8, &V::lockinMin>(90, L"LockinMin", &kFlag),
    Number<u8, &V::lockinMax>(91, L"LockinMax", &kFlag),
    Number<u8, &V::signalNumber>(92, L"SignalNumber", &kInteger),
    Number<u16, &V::lockinMean, 0>(93, L"LockinMeanValue[0]", &kInteger),
    Number<u16, &V::lockinMean, 1>(95, L"LockinMeanValue[1]", &kInteger),
    Number<u16, &V::lockinMean, 2>(97, L"LockinMeanValue[2]", &kInteger),
    Number<u16, &V::lockinMean, 3>(99, L"LockinMeanValue[3]", &kInteger),
};

/// No values of the frame.
constexpr SDunlinField kToldOnly[] = {
    Number<u16, &V::length>(0, L"RecordSize", nullptr, L"bytes"),
    Number<u32, &V::flags>(2, L"Flags"),
    Number<u16, &V::videoPresetHigh>(26, L"VideoPresetHigh"),
    Number<u16, &V::activePreset>(28, L"ActivePreset"),
    Number<u16, &V::lockinWord>(80, L"LockinWord"),
};

constexpr DunlinFields kParts[] = {kClockFields, kValues, kToldOnly};
static_assert(End(kParts) + 8 == kRecordSize);  // the last bytes are unused

}  // namespace

constinit const DunlinLayout kRecord = kParts;

bool HasSignature(const u8* trailer) { return std::memcmp(trailer, kSignature, kSignatureSize) == 0; }
void PutSignature(u8* trailer) { std::memcpy(trailer, kSignature, kSignatureSize); }

}  // namespace ovix::reduce::pruv
