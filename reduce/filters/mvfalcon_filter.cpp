#include "reduce/filters/families.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_family.h"

/// The Falcon camera family: a header line of 128 words of 16 bits, each with one byte in its low half.
/// `docs/formats/mvfalcon.md` shows it whole. The decoder is reached through the factory as "MVFalcon"; it fills the
/// frame info alone.
namespace ovix::reduce {

namespace {

using namespace frame_values;

constexpr wchar_t kName[] = L"MVFalcon";
constexpr u16 kHeaderWords = 128;
constexpr u64 kCounterMax = 0xFFFFFF;
constexpr SHeaderLine kLine{.frameType = frame_types::kMVFalcon,
                            .frameName = L"MVF",
                            .headerType = frame_types::kMVFalconHeader,
                            .words = kHeaderWords,
                            .bytesRead = Word(kHeaderWords)};

// What operations read in place.
constexpr u32 kPreset = Word(1);
constexpr u32 kFrameCounter = Word(16);
constexpr u32 kClock = Word(24);

/// The bytes of a field, the most significant first.
template <u32 kCount>
constexpr u32 Bytes(const u8* bytes) {
    u32 value = 0;
    for (u32 i = 0; i < kCount; ++i) value = value << 8 | bytes[Word(i)];
    return value;
}

// How the bytes of a field are read. What is scaled is scaled in single precision unless it says double.
constexpr double kTick = 156.25;  ///< nanoseconds
u32 PresetBits(const u8* bytes) { return *bytes & 3u; }
template <u32 kCount>
i32 Number(const u8* bytes) {
    return static_cast<i32>(Bytes<kCount>(bytes));
}
bool IsSet(const u8* bytes) { return *bytes != 0; }
u16 LittleWord(const u8* bytes) { return static_cast<u16>(bytes[0] | bytes[Word(1)] << 8); }
double IntegrationTime(const u8* bytes) { return Bytes<4>(bytes) * kTick; }
double FrameRate(const u8* bytes) { return 1e9 / (Bytes<4>(bytes) * kTick); }
float Hundredths(const u8* bytes) { return static_cast<float>(static_cast<i16>(LittleWord(bytes))) / 100.0f; }
float Volts(const u8* bytes) { return static_cast<float>(LittleWord(bytes)) / 1023.0f * 2.44f; }
float Celsius(const u8* bytes) { return (Volts(bytes) - 0.5f) * 100.0f; }
float DigitalGain(const u8* bytes) { return static_cast<float>(Bytes<2>(bytes)) * 6.1035156e-5f; }
float DigitalOffset(const u8* bytes) { return static_cast<float>(static_cast<i16>(Bytes<2>(bytes))) * 0.5f; }
float AnalogOffset(const u8* bytes) { return static_cast<float>(Bytes<2>(bytes)) / 4095.0f * 5.0f - 2.5f; }
void DigitsText(CFieldText& text, const u8* bytes) { text.AddHex(*bytes, 2); }
void ControlWord(CFieldText& text, const u8* bytes) {
    text.Add(L"0x");
    for (u32 i = 0; i < 10; ++i) text.AddHex(bytes[Word(i)], 2);
}
void Time(CFieldText& text, const u8* bytes) { ClockOfDigits(bytes).AddTo(text); }

/// In the order in which the values are shown. A signed number shows the upper half of 32 bits as negative.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, unit
    {kClock, Word(8), L"Time", kDescribedOnly, Time},
    {kPreset, Word(1), L"MV9100_ActivePreset", kCounter, DecimalText<PresetBits>},
    {Word(2), Word(4), L"MV9100_IntegrationTime", kFloat, FixedText<IntegrationTime, 6>, L"ns"},
    {Word(6), Word(10), L"MV9100_FPAControlWord", kText, ControlWord},
    {kFrameCounter, Word(3), L"MV9100_FrameCounter", kCounter, DecimalText<Number<3>>},
    {Word(19), Word(2), L"MV9100_SaturationThreshold", kInteger, DecimalText<Number<2>>},
    {Word(73), Word(4), L"MV9100_SaturationPixelThreshold", kInteger, DecimalText<Number<4>>},
    {Word(21), Word(3), L"MV9100_SaturatedPixels", kInteger, DecimalText<Number<3>>},
    {Word(77), Word(1), L"MV9100_SaturationFlag", kFlag, FlagText<IsSet>},
    {Word(32), Word(1), L"MV9100_IRIGLocked", kFlag, FlagText<IsSet>},
    {Word(33), Word(1), L"MV9100_HumiditySensor", kInteger, DecimalText<Number<1>>},
    {Word(34), Word(1), L"MV9100_PressureSensor", kInteger, DecimalText<Number<1>>},
    {Word(35), Word(2), L"MV9100_TempSensor", kFloat, FixedText<Hundredths, 2>},
    {Word(43), Word(2), L"MV9100_FrontPanelTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {Word(45), Word(2), L"MV9100_AirGapTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {Word(47), Word(2), L"MV9100_DewarTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {Word(52), Word(2), L"MV9100_DigitalGain", kFloat, FixedText<DigitalGain, 3>},
    {Word(54), Word(2), L"MV9100_DigitalOffset", kFloat, FixedText<DigitalOffset, 1>},
    {Word(58), Word(1), L"MV9100_ADResolution", kInteger, DecimalText<Number<1>>},
    {Word(59), Word(2), L"MV9100_AnalogOffset", kFloat, FixedText<AnalogOffset, 6>},
    {Word(61), Word(2), L"MV9100_AnalogIn1", kFloat, FixedText<Volts, 2>},
    {Word(63), Word(2), L"MV9100_AnalogIn2", kFloat, FixedText<Volts, 2>},
    {Word(65), Word(2), L"MV9100_AnalogIn3", kFloat, FixedText<Volts, 2>},
    {Word(67), Word(1), L"MV9100_DigitalIn", kBitfield, DigitsText},
    {Word(68), Word(1), L"MV9100_DigitalOut", kBitfield, DigitsText},
    {Word(69), Word(4), L"MV9100_FrameRate", kFloat, FixedText<FrameRate, 2>, L"Hz"},
    {Word(117), Word(1), L"MV9100_DetectorType", kInteger, DecimalText<Number<1>>},
    {Word(118), Word(1), L"MV9100_ROICType", kInteger, DecimalText<Number<1>>},
    {Word(119), Word(1), L"MV9100_CameraType", kInteger, DecimalText<Number<1>>},
    {Word(120), Word(3), L"MV9100_CameraSN", kInteger, DecimalText<Number<3>>},
    {Word(123), Word(1), L"MV9100_LensID", kInteger, DecimalText<Number<1>>},
};
static_assert(EndOf(kFields) <= Word(kHeaderWords));

class CMVFalconFilter final : public CHeaderLineFilter {
  public:
    CMVFalconFilter() : CHeaderLineFilter(kLine) {}

    const wchar_t* GetName() const override { return kName; }
    u64 FrameCounterMaxValue(GUID) const override { return kCounterMax; }

  protected:
    /// The light operations read the byte without its mask.
    u8 PresetOf(const u8* header) const override { return header[kPreset]; }
    u64 CounterOf(const u8* header) const override { return Bytes<3>(header + kFrameCounter); }
    /// A day beyond those of a year is not limited, unlike in the Osprey family.
    void SetTime(CDateTime& time, const u8* header, u16) const override {
        ClockOfDigits(header + kClock).SetInThisYear(time);
    }

    bool FillObjects(const u8* header, GUID, u16, CReduceObjectArray& objects, u8& preset) override {
        preset = static_cast<u8>(PresetBits(header + kPreset));
        const auto info = objects.Get<CFrameInfoReduceObject>(preset, true);
        if (!info) return false;
        StartFrame(*info, preset, CounterOf(header));
        ClockOfDigits(header + kClock).Set(info->time);
        CFrameValues(info->extra).Add(kFields, header);
        return true;
    }
};

}  // namespace

bool RegisterMVFalconFilter() {
    return RegisterHeaderLineFilter<CMVFalconFilter, kLine>(
        kName, [](const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
            DescribeFields(fields, kFields, static_cast<const u8*>(frame));
        });
}

}  // namespace ovix::reduce
