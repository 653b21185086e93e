#include <algorithm>

#include "core/string.h"
#include "reduce/filters/families.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_family.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"

/// The LOR camera family: a packed little-endian header of 96 bytes at the start of the header line, and behind it the
/// lens block of one of the two models. `docs/formats/lor-ra.md` and `docs/formats/lor-sb.md` show it whole. The two
/// decoders are reached through the factory as "LOR-RA" and "LOR-SB".
namespace ovix::reduce {

namespace {

using namespace frame_values;

constexpr u16 kHeaderWords = 48;
constexpr u32 kHeaderSize = 2 * kHeaderWords;
constexpr u32 kLensBlockEnd = 120;

constexpr SHeaderLine kLineRA{.frameType = frame_types::kLORRA,
                              .frameName = L"LOR-RA",
                              .headerType = frame_types::kLORRAHeader,
                              .words = kHeaderWords,
                              .bytesRead = kHeaderSize};
/// A header that was kept apart has no lens block, so its buffer must be longer than the header by 24 bytes, best of
/// zeros.
constexpr SHeaderLine kLineSB{.frameType = frame_types::kLORSB,
                              .frameName = L"LOR-SB",
                              .headerType = frame_types::kLORSBHeader,
                              .words = kHeaderWords,
                              .bytesRead = kLensBlockEnd};

// What operations read in place.
constexpr u32 kTime = 2;
constexpr u32 kSwitches = 10;
constexpr u32 kFrameCounter = 20;
constexpr u32 kCameraType = 60;
constexpr u32 kCameraSubType = 61;
constexpr u32 kLensState = 96;
constexpr u32 kFocalLength = 98;

/// Whose values a field belongs to.
enum EVariant : u8 {
    RA = 1,
    SB = 2,
    CelsiusSB = 4,  ///< cameras that show their detector's temperature in degrees Celsius, not in kelvin
    Lens = 8,
    kAnySB = SB | CelsiusSB,
    kKelvin = RA | SB,
};

u8 VariantsOfSB(const u8* header) {
    const u8 subType = header[kCameraSubType];
    const u8 model = header[kCameraType] == 3 && (subType == 4 || subType == 5) ? CelsiusSB : SB;
    return WordBits<0, 2>(header + kLensState) == 1 ? model | Lens : model;
}

SDayClock Clock(const u8* header) {
    const u8* time = header + kTime;
    const u32 microseconds = u32{LoadLittle<u16>(time + 4)} << 16 | LoadLittle<u16>(time + 6);
    return {.day = static_cast<int>(WordBits<2, 10>(time)),
            .hours = static_cast<int>(WordBits<0, 1>(time) << 4 | WordBits<12, 15>(time + 2)),
            .minutes = static_cast<int>(WordBits<6, 11>(time + 2)),
            .seconds = static_cast<int>(WordBits<0, 5>(time + 2)),
            .milliseconds = static_cast<int>(microseconds / 1000),
            .microseconds = static_cast<int>(microseconds % 1000)};
}

// How the bytes of a field are read. What is scaled is scaled in single precision unless it says double.
template <u32 kBit>
bool Bit(const u8* bytes) {
    return WordBits<kBit>(bytes) != 0;
}
float Hundredths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 100.0f; }
float Thousandths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 1000.0f; }
float Celsius(const u8* bytes) { return Hundredths(bytes) - 273.15f; }
float CelsiusFromDouble(const u8* bytes) { return static_cast<float>(static_cast<double>(Hundredths(bytes)) - 273.15); }
double IntegrationTime(const u8* bytes) { return LoadLittle<u32>(bytes) / 6250.0; }
double FrameRate(const u8* bytes) { return 1.0 / (LoadLittle<u32>(bytes) / 6.25e6); }
float DigitalGain(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 16383.0f; }
float DigitalOffset(const u8* bytes) { return static_cast<float>(LoadLittle<i16>(bytes)) * 0.5f; }
u32 SaturatedPixels(const u8* bytes) { return LoadLittle<u32>(bytes) & 0x7FFFFFFF; }
bool SaturationFlag(const u8* bytes) { return LoadLittle<u32>(bytes) >> 31 != 0; }
float Tenths(const u8* bytes) { return static_cast<float>(LoadLittle<u16>(bytes)) / 10.0f; }
float FocalLength(const u8* bytes) { return static_cast<float>(LoadLittle<u32>(bytes)) / 10.0f; }
/// The low 24 bits with their sign.
i32 Encoder(const u8* bytes) { return static_cast<i32>(LoadLittle<u32>(bytes) << 8) >> 8; }
/// The same in both directions; infinite for a focal length of 0.
double IFOV(const u8* bytes) { return static_cast<double>(14.0f / FocalLength(bytes)) * 1000.0; }
void ControlWord(CFieldText& text, const u8* bytes) {
    text.Add(L"0x");
    for (u32 i = 0; i < 5; ++i) text.AddHex(LoadLittle<u16>(bytes + Word(i)), 4);
}
void Time(CFieldText& text, const u8* bytes) { Clock(bytes - kTime).AddTo(text); }

/// In the order in which the values are shown.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, unit, variants
    {kTime, 8, L"Time", kDescribedOnly, Time},
    {kSwitches, 2, L"ActivePreset", kCounter, DecimalText<WordBits<0, 1>>},
    {kFrameCounter, 4, L"FrameCounter", kCounter, DecimalText<LoadLittle<u32>>},
    {0, 2, L"HeaderID", kInteger, DecimalText<LoadLittle<u16>>},
    {kTime, 2, L"IRIGLocked", kFlag, FlagText<Bit<15>>},
    {kSwitches, 2, L"Trigger", kFlag, FlagText<Bit<15>>},
    {kSwitches, 2, L"RecordStart", kFlag, FlagText<Bit<14>>, L"", kAnySB},
    {kSwitches, 2, L"VideoNUCOn", kFlag, FlagText<Bit<4>>},
    {kSwitches, 2, L"GigENucOn", kFlag, FlagText<Bit<3>>},
    {kSwitches, 2, L"CameraLinkNUCOn", kFlag, FlagText<Bit<2>>},
    {kSwitches, 2, L"FlagInFOV", kFlag, FlagText<Bit<5>>},
    {12, 2, L"ChassisTemp", kFloat, FixedText<Celsius, 2>, L"°C", RA},
    {12, 2, L"FrontPanelTemp", kFloat, FixedText<Celsius, 2>, L"°C", kAnySB},
    {14, 2, L"AirGapTemp", kFloat, FixedText<Celsius, 2>, L"°C", kAnySB},
    {16, 2, L"InternalTemp", kFloat, FixedText<Celsius, 2>, L"°C", kAnySB},
    {18, 2, L"FPATemp", kFloat, FixedText<Hundredths, 2>, L"K", kKelvin},
    {18, 2, L"FPATemp", kFloat, FixedText<CelsiusFromDouble, 2>, L"°C", CelsiusSB},
    {24, 4, L"IntegrationTime", kFloat, FixedText<IntegrationTime, 6>, L"ms"},
    {30, 2, L"FilterID", kInteger, DecimalText<LoadLittle<u16>>},
    {34, 10, L"FPAControlWord", kText, ControlWord},
    {44, 2, L"SaturationThreshold", kInteger, DecimalText<LoadLittle<u16>>},
    {46, 4, L"SaturatedPixels", kInteger, DecimalText<SaturatedPixels>},
    {46, 4, L"SaturationFlag", kFlag, FlagText<SaturationFlag>},
    {50, 4, L"FrameRate", kFloat, FixedText<FrameRate, 2>, L"Hz"},
    {54, 2, L"DigitalGain", kFloat, FixedText<DigitalGain, 3>},
    {56, 2, L"DigitalOffset", kFloat, FixedText<DigitalOffset, 1>},
    {58, 1, L"DetectorType", kInteger, DecimalText<LoadLittle<u8>>},
    {62, 2, L"AnalogOffset", kFloat, FixedText<Thousandths, 3>},
    {64, 2, L"MainBoardTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {66, 2, L"PowerBoardTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {68, 2, L"DigitizerBoardTemp", kFloat, FixedText<Celsius, 2>, L"°C"},
    {70, 2, L"LensTemp", kFloat, FixedText<Celsius, 2>, L"°C", RA},
    {70, 2, L"NUCFlagTemp", kFloat, FixedText<Celsius, 2>, L"°C", kAnySB},
    {72, 2, L"AnalogIn_1", kFloat, FixedText<Thousandths, 3>},
    {74, 2, L"AnalogIn_2", kFloat, FixedText<Thousandths, 3>},
    {76, 2, L"AnalogIn_3", kFloat, FixedText<Thousandths, 3>},
    {78, 4, L"LockinPhase", kInteger, DecimalText<LoadLittle<u32>>},
    {82, 4, L"LockinPeriod", kInteger, DecimalText<LoadLittle<u32>>},
    {86, 2, L"LockinValue", kInteger, DecimalText<LoadLittle<u16>>},
    {88, 1, L"DigitalIn", kBitfield, HexText<LoadLittle<u8>, 2>},
    {89, 1, L"DigitalOut", kBitfield, HexText<LoadLittle<u8>, 2>},
    {90, 2, L"ADResolution", kInteger, DecimalText<LoadLittle<u16>>},
    {59, 1, L"ROICType", kInteger, DecimalText<LoadLittle<u8>>},
    {kCameraType, 1, L"CameraType", kInteger, DecimalText<LoadLittle<u8>>},
    {kCameraSubType, 1, L"CameraSubType", kInteger, DecimalText<LoadLittle<u8>>},
    {92, 2, L"CameraSN", kInteger, DecimalText<LoadLittle<u16>>},
    {94, 2, L"LensID", kInteger, DecimalText<LoadLittle<u16>>},
    {kLensState, 2, L"LensBlockState", kDescribedOnly, HexText<LoadLittle<u16>, 4>, L"", Lens},
    {kFocalLength, 4, L"LensFocalLength", kFloat, FixedText<FocalLength, 2>, L"", Lens},
    {102, 4, L"LensFOVEncoderPos", kInteger, DecimalText<Encoder>, L"", Lens},
    {106, 4, L"LensFocusEncoderPos", kInteger, DecimalText<Encoder>, L"", Lens},
    {110, 2, L"LensAnalogTemp", kFloat, FixedText<Tenths, 2>, L"", Lens},
    {112, 2, L"LensBoardTemp", kFloat, FixedText<Tenths, 2>, L"", Lens},
    {114, 2, L"LensExtTemp1", kFloat, FixedText<Tenths, 2>, L"", Lens},
    {116, 2, L"LensExtTemp2", kFloat, FixedText<Tenths, 2>, L"", Lens},
    {118, 2, L"LensExtTemp3", kFloat, FixedText<Tenths, 2>, L"", Lens},
    {kFocalLength, 4, L"IHFOV", kFloat, FixedText<IFOV, 3>, L"", Lens},
    {kFocalLength, 4, L"IVFOV", kFloat, FixedText<IFOV, 3>, L"", Lens},
};
static_assert(EndOf(kFields) == kLensBlockEnd);

struct STriggerField {
    const wchar_t* name;
    u32 (*bit)(const u8* bytes);
};
constexpr STriggerField kTriggerFields[] = {{L"Trigger", WordBits<15>}, {L"RecordStart", WordBits<14>}};

/// What the two decoders share.
class CLORFilter : public CHeaderLineFilter {
  public:
    u64 FrameCounterMaxValue(GUID) const override { return CUInt32::Max; }

    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16, u16, u16, u8 field, bool& triggered,
                         u16& frameIndex) override {
        triggered = false;
        frameIndex = 0;
        if (field >= triggerFields_ || !Line().Takes(type) || sourceSize < kHeaderSize) return false;
        triggered = kTriggerFields[field].bit(static_cast<const u8*>(source) + kSwitches) != 0;
        return true;
    }
    bool GetTriggerFields(GUID, TArray<CString>& names) const override {
        names.Empty();
        for (u8 i = 0; i < triggerFields_; ++i) names.Add(kTriggerFields[i].name);
        return true;
    }

  protected:
    /// The trigger inputs are the first `triggerFields` of the two.
    CLORFilter(const SHeaderLine& line, u8 triggerFields) : CHeaderLineFilter(line), triggerFields_(triggerFields) {}

    u8 PresetOf(const u8* header) const override { return static_cast<u8>(WordBits<0, 1>(header + kSwitches)); }
    u64 CounterOf(const u8* header) const override { return LoadLittle<u32>(header + kFrameCounter); }
    /// The header has no year: that of `time` stays.
    void SetTime(CDateTime& time, const u8* header, u16) const override { Clock(header).Set(time); }

    /// False when a plug-in's class has the name of the frame info.
    bool FillFrameInfo(const u8* header, u8 variants, CReduceObjectArray& objects, u8 preset) const {
        const TSharedPtr<CFrameInfoReduceObject> info = objects.Get<CFrameInfoReduceObject>(preset, true);
        if (!info) return false;
        StartFrame(*info, preset, CounterOf(header));
        Clock(header).Set(info->time);
        CFrameValues(info->extra).Add(kFields, header, variants);
        return true;
    }

  private:
    u8 triggerFields_;
};

class CLORFilterRA final : public CLORFilter {
  public:
    CLORFilterRA() : CLORFilter(kLineRA, 1) {}
    const wchar_t* GetName() const override { return kLineRA.frameName; }

  protected:
    bool FillObjects(const u8* header, GUID, u16, CReduceObjectArray& objects, u8& preset) override {
        preset = PresetOf(header);
        return FillFrameInfo(header, RA, objects, preset);
    }
};

bool HasFixedPreset(CReduceObjectArray& objects) {
    const TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(false);
    return source && source->fixedPreset;
}

class CLORFilterSB final : public CLORFilter {
  public:
    CLORFilterSB() : CLORFilter(kLineSB, 2) {}
    const wchar_t* GetName() const override { return kLineSB.frameName; }

  protected:
    bool FillObjects(const u8* header, GUID type, u16, CReduceObjectArray& objects, u8& preset) override {
        // Only headers that were kept apart obey the source.
        preset = type == kLineSB.headerType && HasFixedPreset(objects) ? u8{0} : PresetOf(header);
        const u8 variants = VariantsOfSB(header);
        if (!FillFrameInfo(header, variants, objects, preset)) return false;
        if (!(variants & Lens)) return true;

        const TSharedPtr<CFOVReduceObject> view = objects.GetFOV(true);
        if (!view) return false;
        view->valid = true;
        view->IHFOV = view->IVFOV = IFOV(header + kFocalLength);
        return true;
    }
};

}  // namespace

bool RegisterLORFilterRA() {
    return RegisterHeaderLineFilter<CLORFilterRA, kLineRA>(
        kLineRA.frameName, [](const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
            DescribeFields(fields, kFields, static_cast<const u8*>(frame), 0, RA);
        });
}

bool RegisterLORFilterSB() {
    return RegisterHeaderLineFilter<CLORFilterSB, kLineSB>(
        kLineSB.frameName, [](const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
            const u8* header = static_cast<const u8*>(frame);
            DescribeFields(fields, kFields, header, 0, VariantsOfSB(header));
        });
}

}  // namespace ovix::reduce
