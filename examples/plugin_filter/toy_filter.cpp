// A plug-in that teaches the library to read the frames of one more camera. README.md goes through it step by step.

#include <cstring>

#include "core/core.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_table.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "toy_frame.h"

namespace toy {
namespace {

using namespace ovix::reduce;

double ChassisTemp(const u8* bytes) { return LoadLittle<i16>(bytes) / 100.0; }

/// The header as a data sheet lists it. `ParseFrame` shows the fields with a kind beside the frame; those that are
/// only described have a place of their own there. `DescribeFrame` gives all, with their units.
constexpr STableField kFields[] = {
    // offset, size, name, kind, text, unit
    {kFrameNumber, 4, L"FrameNumber", kDescribedOnly, DecimalText<LoadLittle<u32>>},
    {kSeconds, 4, L"Seconds", kDescribedOnly, DecimalText<LoadLittle<u32>>, L"s since 1970"},
    {kChassisTemp, 2, L"ChassisTemp", frame_values::kFloat, FixedText<ChassisTemp, 2>, L"°C"},
    {kPreset, 1, L"Preset", kDescribedOnly, DecimalText<LoadLittle<u8>>},
};

/// What the header says of the frame itself.
struct SHeader {
    explicit SHeader(const void* frame) {
        const u8* bytes = static_cast<const u8*>(frame);
        number = LoadLittle<u32>(bytes + kFrameNumber);
        time.SetTimestamp(UnixTimestamp(LoadLittle<u32>(bytes + kSeconds), 0));
        preset = bytes[kPreset];
    }

    u32 number = 0;
    CDateTime time;
    u8 preset = 0;
};

/// Decodes one frame after the other. The factory makes one object for each stream; this one remembers nothing.
class CToyFilter final : public IFilter {
  public:
    static constexpr const wchar_t* kName = L"Toy";

    const wchar_t* GetName() const override { return kName; }
    bool HasPixels(GUID type) const override { return type == kPixelType; }
    bool HasTime(GUID type) const override { return type == kPixelType; }
    bool HasFrameCounter(GUID type) const override { return type == kPixelType; }
    u64 FrameCounterMaxValue(GUID) const override { return 0xFFFFFFFF; }

    bool GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) override {
        if (type != kPixelType) return false;
        *pixels = static_cast<u8*>(frame) + kHeaderSize;
        stride = 2 * width;
        return true;
    }

    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest, CReduceObjectArray& objects,
                    u8& preset) override {
        if (type != kPixelType || (dest.data && dest.type != UInt16)) return false;
        const SHeader header(frame);
        const auto info = objects.Get<CFrameInfoReduceObject>(header.preset, true);
        if (!info) return false;
        info->valid = true;
        info->preset = preset = header.preset;
        info->frameNumber = header.number;
        info->time = header.time;
        CFrameValues(info->extra).Add(kFields, static_cast<u8*>(frame));
        if (dest.data) std::memcpy(dest.data, static_cast<u8*>(frame) + kHeaderSize, 2u * width * height);
        return true;
    }

    bool ParseBasicInfo(void* frame, GUID type, u16, u16, u32, u8& preset, u64& counter, CDateTime& time) override {
        if (type != kPixelType) return false;
        const SHeader header(frame);
        preset = header.preset;
        counter = header.number;
        time = header.time;
        return true;
    }
    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override {
        u64 counter = 0;
        CDateTime time;
        return ParseBasicInfo(frame, type, width, height, frameSize, preset, counter, time);
    }
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override {
        u8 preset = 0;
        u64 counter = 0;
        return ParseBasicInfo(frame, type, width, height, frameSize, preset, counter, time);
    }
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override {
        u8 preset = 0;
        CDateTime time;
        return ParseBasicInfo(frame, type, width, height, frameSize, preset, counter, time);
    }
};

bool Fail(SFrameFault* fault, u64 offset, const CString& expected, const CString& found) {
    if (fault) *fault = {offset, expected, found};
    return false;
}

/// The operations of a filter trust their caller. This is what makes that safe for bytes that nobody vouches for: after
/// true, none of them reads past the end of the frame.
bool Check(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    if (type != kPixelType) return Fail(fault, 0, L"a toy frame", L"another pixel type");
    const u64 wanted = kHeaderSize + u64{2} * width * height;
    if (frameSize < wanted) {
        return Fail(fault, frameSize, CUInt64::ToString(wanted) + L" bytes", CUInt32::ToString(frameSize) + L" bytes");
    }
    const u8* bytes = static_cast<const u8*>(frame);
    if (std::memcmp(bytes + kMagic, "TOY1", 4) != 0) return Fail(fault, kMagic, L"TOY1", L"other letters");
    if (bytes[kPreset] > 7) return Fail(fault, kPreset, L"a preset from 0 to 7", CUInt8::ToString(bytes[kPreset]));
    return true;
}

/// Asked only for frames that passed the check.
void Describe(const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
    DescribeFields(fields, kFields, static_cast<const u8*>(frame));
}

/// What the pixels become, and what a frame says of itself: programs show nothing of a frame as read that is not there.
bool Form(GUID type, SFrameForm& form) {
    form = SFrameForm::OfCounts(type);
    return type == kPixelType;
}
void Evidence(const void*, GUID, u16, u16, u32, SFrameEvidence& evidence) {
    evidence.mark = EFrameMark::Present;  // or the check would have refused the frame
    evidence.time = EFrameTime::Full;
    evidence.frameCounter = evidence.preset = true;
}

/// Runs when the library is loaded. Its result is of no use to anybody.
[[maybe_unused]] const bool kRegistered = [] {
    using Functions = TCreateAndDestroy<CToyFilter, IFilter>;
    return filterFactory()->Register(CToyFilter::kName, {kPixelType}, Functions::Create, Functions::Destroy,
                                     {.check = Check, .form = Form, .evidence = Evidence, .describe = Describe}) &&
           RegisterPixelType(kPixelType, L"Toy IR", 2, UInt16, rootIRType);
}();

}  // namespace
}  // namespace toy
