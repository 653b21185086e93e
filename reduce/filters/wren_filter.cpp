#include <algorithm>
#include <cstring>

#include "core/string.h"
#include "core/visit.h"
#include "reduce/filters/families.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/tomz_trailer.h"

/// The Wren camera family: pixels of 14 bits, the preset in the two bits above the first of them, and a trailer. The
/// native one is the signature "PRUV" and a record of 109 bytes for each image of the buffer; the older one is that of
/// `tomz_trailer.h`. `docs/formats/wren.md` shows both whole. The decoder is reached through the factory as "Wren".
namespace ovix::reduce {

namespace {

using namespace frame_values;
using F = SDunlinFrame;

constexpr SDunlinFamily kFamily{L"Wren", frame_types::kWren};
constexpr u16 kPixelMask = 0x3FFF;

constexpr char kSignature[] = "PRUV";
constexpr u32 kSignatureSize = 4;
constexpr u32 kRecordSize = 109;
constexpr u32 kTrailerSize = kSignatureSize + kRecordSize;  ///< of one image

// Offsets in the record that are read or written in place.
constexpr u32 kRecordSizeAt = 0;
constexpr u32 kFlags = 2;
constexpr u32 kTimeStamp = 6;
constexpr u32 kFrameCounter = 14;
constexpr u32 kVideoPresetLow = 24;
constexpr u32 kVideoPresetHigh = 26;
constexpr u32 kDetectorTemp = 30;
constexpr u32 kIntegrationTime = 54;
constexpr u32 kFrameRate = 58;
constexpr u32 kExternalTrigger = 63;
constexpr u32 kDataDisable = 64;  ///< u8, not 0: the image is not to be kept
constexpr u32 kLensChange = 66;
constexpr u32 kTriggerInput = 68;  ///< u8, not 0: it fired
constexpr u32 kTimeCode = 69;
constexpr u32 kLockinMin = 90;
constexpr u32 kLockinMax = 91;
constexpr u32 kSignalNumber = 92;

constexpr TKeptField<F> kRecord[] = {
    TKeptField<F>{{kIntegrationTime, 4, L"IntegrationTime", kFloat, PlainText<LoadLittle<float>>, L"µs"}},
    Number<float, &F::frameRate>(58, L"FrameRate", kFloat, L"Hz"),
    Number<u16, &F::videoPresetLow>(24, L"VideoPreset", kInteger),
    Number<u16, &F::numPresets>(22, L"NumPresets", kInteger),
    Number<float, &F::detectorTemp>(30, L"DetectorTemp", kFloat, L"K"),
    Number<float, &F::sensorTemp, 0>(34, L"SensorTemp[0]", kFloat, L"K"),
    Number<float, &F::sensorTemp, 1>(38, L"SensorTemp[1]", kFloat, L"K"),
    Number<float, &F::sensorTemp, 2>(42, L"SensorTemp[2]", kFloat, L"K"),
    Number<float, &F::sensorTemp, 3>(46, L"SensorTemp[3]", kFloat, L"K"),
    Number<float, &F::masterClock>(50, L"MasterClock", kFloat, L"Hz"),
    Number<u8, &F::filterPosition>(62, L"FilterPosition", kInteger),
    Number<u8, &F::externalTrigger>(63, L"ExternalTrigger", kFlag),
    Number<u8, &F::triggerInput>(kTriggerInput, L"TriggerInput", kFlag),
    Number<u8, &F::dataDisable>(kDataDisable, L"DataDisable", kFlag),
    Number<u8, &F::pageIndex>(65, L"PageIndex", kInteger),
    Number<u8, &F::lensChange>(66, L"LensChange", kFlag),
    Number<u8, &F::inputSignalGrabbed>(67, L"InputSignalGrabb", kFlag),
    Number<u32, &F::lockinPeriod>(82, L"LockinPeriod", kInteger),
    Number<u32, &F::lockinPhase>(86, L"LockinPhase", kInteger),
    Number<u8, &F::lockinMin>(90, L"LockinMin", kFlag),
    Number<u8, &F::lockinMax>(91, L"LockinMax", kFlag),
    Number<u8, &F::signalNumber>(92, L"SignalNumber", kInteger),
    Number<u16, &F::lockinMean, 0>(93, L"LockinMeanValue[0]", kInteger),
    Number<u16, &F::lockinMean, 1>(95, L"LockinMeanValue[1]", kInteger),
    Number<u16, &F::lockinMean, 2>(97, L"LockinMeanValue[2]", kInteger),
    Number<u16, &F::lockinMean, 3>(99, L"LockinMeanValue[3]", kInteger),
    // No values of the frame.
    Number<u64, &F::timeStamp>(kTimeStamp, L"TimeStamp", kDescribedOnly, L"µs"),
    Number<u64, &F::frameCounter>(kFrameCounter, L"FrameCounter"),
    TKeptField<F>{{kRecordSizeAt, 2, L"RecordSize", kDescribedOnly, PlainText<LoadLittle<u16>>, L"bytes"}},
    Number<u32, &F::flags>(2, L"Flags"),
    Number<u16, &F::videoPresetHigh>(26, L"VideoPresetHigh"),
    Number<u16, &F::activePreset>(28, L"ActivePreset"),
    Number<u16, &F::lockinWord>(80, L"LockinWord"),
};
static_assert(EndOf(kRecord) + 8 == kRecordSize);  // the last bytes are unused

bool HasSignature(const u8* trailer) { return std::memcmp(trailer, kSignature, kSignatureSize) == 0; }

/// What an older trailer holds as the record does, byte for byte.
struct SMove {
    u32 to, from, size;
};
constexpr SMove kMoves[] = {
    {kTimeStamp, tomz::kTimeStamp, 8},
    {kFrameCounter, tomz::kFrameCounter, 4},
    {22, 21, 1},  // number of presets
    {28, 22, 1},  // active preset
    {kDetectorTemp, 40, 4},
    {34, 24, 16},  // four sensors
    {50, tomz::kMasterClock, 4},
    {62, 56, 1},  // filter position
    {65, 23, 1},  // page index
    {kTriggerInput, 60, 1},
    {kTimeCode, tomz::kTimeCode, time_code::kSize},
};
constexpr SMove kLockinMoves[] = {{80, 72, 10}, {93, 84, 8}};  // word, period, phase; four means

/// Turns an older trailer into a native record, with zeros for what it does not say.
void MakeRecord(u8* record, const u8* trailer) {
    constexpr u8 kLockinPresent = 2;
    std::memset(record, 0, kRecordSize);
    const auto move = [&](const SMove& m) { std::memcpy(record + m.to, trailer + m.from, m.size); };
    std::for_each(std::begin(kMoves), std::end(kMoves), move);
    StoreLittle<u16>(record + kRecordSizeAt, kRecordSize);
    const u8 flags = trailer[tomz::kFlags];
    record[kFlags] = 1 | (flags & kLockinPresent);
    record[kVideoPresetLow] = trailer[tomz::kVideoPreset] & 15;
    record[kVideoPresetHigh] = trailer[tomz::kVideoPreset] >> 4;
    StoreLittle(record + kIntegrationTime, tomz::IntegrationTime<tomz::OlderWren>(trailer));
    StoreLittle(record + kFrameRate, tomz::FrameRate<tomz::OlderWren>(trailer));
    record[kExternalTrigger] = flags & 1;
    record[kDataDisable] = flags >> 2 & 1;
    record[kLensChange] = flags >> 3 & 1;
    if (!(flags & kLockinPresent)) return;
    std::for_each(std::begin(kLockinMoves), std::end(kLockinMoves), move);
    const u8 lockin = trailer[tomz::kLockinBits];
    record[kLockinMin] = lockin & 1;
    record[kLockinMax] = lockin >> 1 & 1;
    record[kSignalNumber] = lockin >> 2 & 7;
}

bool IsOlderTrailer(const u8* trailer) {
    if (!tomz::HasSignature(trailer)) return false;
    const auto words = tomz::ExpectedWords(trailer);
    return std::all_of(words.begin(), words.end(), [&](const auto& word) { return word.IsThere(trailer); });
}

/// Where the light operations find the clock; the version, length and checksum of an older trailer are not looked at.
struct SClock {
    const u8* timeStamp = nullptr;  ///< null when there is no signature
    const u8* timeCode = nullptr;
    u64 counter = 0;

    explicit SClock(const u8* trailer) {
        if (HasSignature(trailer)) {
            const u8* record = trailer + kSignatureSize;
            timeStamp = record + kTimeStamp;
            timeCode = record + kTimeCode;
            counter = LoadLittle<u64>(record + kFrameCounter);
        } else if (tomz::HasSignature(trailer)) {
            timeStamp = trailer + tomz::kTimeStamp;
            timeCode = trailer + tomz::kTimeCode;
            counter = LoadLittle<u32>(trailer + tomz::kFrameCounter);
        }
    }
    explicit operator bool() const { return timeStamp != nullptr; }
    void Set(CDateTime& time) const {
        if (*timeCode & time_code::kIsUsed) {
            time_code::SetTime(time, timeCode);
        } else {
            time_code::SetTime(time, LoadLittle<u64>(timeStamp));
        }
    }
    bool HasYear() const { return !(*timeCode & time_code::kIsUsed) || !(*timeCode & time_code::kYearNotValid); }
};

u8 PresetOf(const void* frame) { return static_cast<u8>(LoadLittle<u16>(static_cast<const u8*>(frame)) >> 14); }

/// Bytes up to the first record of a native buffer.
u64 RecordsOffset(u64 image, u16 frameCount) { return frameCount * image + kSignatureSize; }
/// Bytes behind the images of a native buffer.
u64 RecordsSize(u16 frameCount) { return kSignatureSize + u64{frameCount} * kRecordSize; }
bool HoldsPacket(u32 sourceSize, u64 image, u16 frameCount) {
    return frameCount * image + RecordsSize(frameCount) <= sourceSize;
}

/// A frame in an older buffer: the image, and as many lines as the trailer takes. `width` is not 0.
u64 OlderStride(u16 width, u16 height) {
    const u32 line = 2u * width;
    const u32 trailerLines = (tomz::kSize + line - 1) / line;
    return u64{line} * (height + trailerLines);
}

bool Check(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const u64 image = ImageSize(width, height);
    if (!kFamily.Takes(type)) return probe.RefuseType(kFamily.name);
    if (!probe.Holds(0, image, L"pixels of 2 bytes")) return false;
    if (!probe.Holds(image, kSignatureSize, L"the trailer's signature")) return false;
    const u8* trailer = probe.At(image);
    if (HasSignature(trailer)) return probe.Holds(image, kTrailerSize, L"the trailer");
    if (!tomz::HasSignature(trailer)) {
        return probe.Refuse(image, L"the trailer's signature (\"PRUV\" or \"TOMZ\")",
                            CString::FromFormat(L"0x%08X", LoadLittle<u32>(trailer)));
    }
    if (!probe.Holds(image, tomz::kSize, L"the trailer")) return false;
    const auto words = tomz::ExpectedWords(trailer);
    return std::all_of(words.begin(), words.end(), [&](const tomz::SExpectedWord& word) {
        return probe.HasWord(image + word.offset, word.value, word.meaning);
    });
}

/// What `StoreFrame` and `CheckForTrigger` read. Images of a native buffer have their records checked by the size
/// alone: a record holds no offset.
bool CheckBuffer(const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
    const CFrameProbe probe(buffer, size, fault);
    const u64 image = ImageSize(width, height);
    if (!kFamily.Takes(type)) return probe.RefuseType(kFamily.name);
    if (!probe.Holds(image, tomz::kSignatureSize, L"the trailer's signature")) return false;
    if (!tomz::HasSignature(probe.At(image))) {
        const u64 signature = images * image;
        if (!probe.Holds(signature, RecordsSize(images), L"the signature and a record for each image")) return false;
        return HasSignature(probe.At(signature)) ||
               probe.Refuse(signature, L"the signature of the records (\"PRUV\")", L"other bytes");
    }
    if (width == 0) return probe.Refuse(0, L"a width above 0", L"0");
    const u64 stride = OlderStride(width, height);
    if (!probe.Holds(0, images * stride, L"the images, each with the lines of its trailer")) return false;
    for (u16 i = 0; i < images; ++i) {
        if (Check(probe.At(i * stride), type, width, height, static_cast<u32>(stride), fault)) continue;
        if (fault) fault->offset += i * stride;
        return false;
    }
    return true;
}

void GetEvidence(const void* frame, GUID, u16 width, u16 height, u32, SFrameEvidence& evidence) {
    const SClock clock(CDunlinFilter::TrailerOf(frame, width, height));
    evidence.mark = EFrameMark::Present;  // or the check would have refused the frame
    evidence.time = clock.HasYear() ? EFrameTime::Full : EFrameTime::WithoutYear;
    evidence.frameCounter = true;
    evidence.preset = ImageSize(width, height) > 0;  // it stands in the first pixel
}

void Describe(const void* frame, GUID, u16 width, u16 height, u32, TArray<SFrameField>& fields) {
    const u64 image = ImageSize(width, height);
    const u8* trailer = CDunlinFilter::TrailerOf(frame, width, height);
    const bool native = HasSignature(trailer);
    fields.Add({0, 2, L"Preset", CUInt8::ToString(PresetOf(frame))});
    fields.Add({image, kSignatureSize, L"Signature", native ? L"PRUV" : L"TOMZ"});
    if (native) {
        const u64 at = image + kSignatureSize;
        DescribeFields(fields, kRecord, trailer + kSignatureSize, at);
        DescribeFields(fields, time_code::kFields, trailer + kSignatureSize + kTimeCode, at + kTimeCode);
    } else {
        tomz::Describe(fields, trailer, image, tomz::OlderWren);
    }
}

/// Extends the 32-bit frame counter of older trailers as `ParseFrame` sees them: one object serves one stream.
class CWrenFilter final : public CDunlinFilter {
  public:
    CWrenFilter() : CDunlinFilter(kFamily) {}

    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest, CReduceObjectArray& objects,
                    u8& preset) override;
    bool ParsePreset(void* frame, GUID type, u16, u16, u32, u8& preset) override {
        if (!Takes(type)) return false;
        preset = PresetOf(frame);
        return true;
    }

    /// A native buffer holds all images, the signature, and a record for each; a frame is stored with the signature and
    /// its own record. In an older one each image is followed by the lines of its trailer. False, and nothing written,
    /// for a frame whose record disables it, and when source or destination do not hold what is asked for.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    /// Takes every buffer for a native one.
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

  protected:
    // The counter of an older trailer is not extended here.
    bool ReadCounter(const u8* trailer, u64& counter) const override {
        const SClock clock(trailer);
        counter = clock.counter;
        return static_cast<bool>(clock);
    }
    bool ReadTime(const u8* trailer, CDateTime& time) const override {
        const SClock clock(trailer);
        if (clock) clock.Set(time);
        return static_cast<bool>(clock);
    }
    u8 BasicPreset(const void* frame, const u8*) const override { return PresetOf(frame); }

  private:
    u64 Extended(u32 counter);

    u64 counterHigh_ = 0;  ///< the part of the extended counter above 32 bits
    u32 lastCounter_ = 0;  ///< of the last older trailer
};

bool CWrenFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest,
                             CReduceObjectArray& objects, u8& preset) {
    if (!Takes(type)) return false;
    preset = PresetOf(frame);
    const u8* trailer = TrailerOf(frame, width, height);
    u8 made[kRecordSize];
    const u8* record = trailer + kSignatureSize;
    if (!HasSignature(trailer)) {
        if (!IsOlderTrailer(trailer)) return false;
        MakeRecord(made, trailer);
        StoreLittle(made + kFrameCounter, Extended(LoadLittle<u32>(trailer + tomz::kFrameCounter)));
        record = made;
    }
    const SDunlinObjects filled(objects, preset);
    if (!filled) return false;
    filled.factoryCal->detectorTemp = LoadLittle<float>(record + kDetectorTemp);
    filled.factoryCal->integrationTime = LoadLittle<float>(record + kIntegrationTime);

    CDunlinFrameInfoReduceObject& kept = *filled.dunlinInfo;
    LoadFields<SDunlinFrame>(kept, kRecord, record);
    LoadFields<SDunlinFrame>(kept, time_code::kFields, record + kTimeCode);
    kept.integrationTime = TruncateTo<i32>(filled.factoryCal->integrationTime);

    CFrameInfoReduceObject& info = *filled.frameInfo;
    StartFrame(info, preset, static_cast<u32>(kept.frameCounter));
    SClock(trailer).Set(info.time);
    CFrameValues(info.extra).Add(kRecord, record);

    if (dest.data) CopyMaskedPixels(dest.data, frame, u64{width} * height, kPixelMask);
    return true;
}

u64 CWrenFilter::Extended(u32 counter) {
    constexpr u32 kHighHalf = 0x80000001;  // a lower number that falls is no overflow
    if (lastCounter_ >= kHighHalf && counter < lastCounter_) counterHigh_ += u64{1} << 32;
    lastCounter_ = counter;
    return counterHigh_ | counter;
}

bool CWrenFilter::StoreFrame(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount,
                             u16 frameIndex, void* dest, u32 destSize) {
    const u64 image = ImageSize(width, height);
    if (frameIndex >= frameCount || image + kSignatureSize > sourceSize) return false;
    const u8* from = static_cast<const u8*>(source);
    u8* to = static_cast<u8*>(dest);
    if (tomz::HasSignature(from + image)) {
        if (width == 0) return false;
        const u64 stride = OlderStride(width, height);
        if (frameCount * stride > sourceSize || stride > destSize) return false;
        std::memcpy(to, from + frameIndex * stride, stride);
        return true;
    }
    if (!HoldsPacket(sourceSize, image, frameCount) || image + kTrailerSize > destSize) return false;
    const u8* record = from + RecordsOffset(image, frameCount) + u64{frameIndex} * kRecordSize;
    if (record[kDataDisable]) return false;
    if (image) std::memcpy(to, from + frameIndex * image, image);
    std::memcpy(to + image, kSignature, kSignatureSize);
    std::memcpy(to + image + kSignatureSize, record, kRecordSize);
    return true;
}

bool CWrenFilter::CheckForTrigger(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount, u8,
                                  bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    const u64 image = ImageSize(width, height);
    if (!HoldsPacket(sourceSize, image, frameCount)) return false;
    const u8* input = static_cast<const u8*>(source) + RecordsOffset(image, frameCount) + kTriggerInput;
    for (u16 i = 0; i < frameCount && !triggered; ++i) {
        triggered = input[u64{i} * kRecordSize] != 0;
        if (triggered) frameIndex = i;
    }
    return true;
}

}  // namespace

bool RegisterWrenFilter() {
    using Functions = TCreateAndDestroy<CWrenFilter, IFilter>;
    return kFamily.Register(Functions::Create, Functions::Destroy,
                            {.check = Check,
                             .checkBuffer = CheckBuffer,
                             .form = [](GUID type, SFrameForm& form) { return kFamily.GetForm(type, form); },
                             .evidence = GetEvidence,
                             .describe = Describe});
}

}  // namespace ovix::reduce
