#include <algorithm>
#include <cstring>

#include "core/visit.h"
#include "reduce/filters/families.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/tomz_trailer.h"

/// The Lapwing camera family: 16-bit pixels, and one line more for the trailer of `tomz_trailer.h`.
/// `docs/formats/lapwing.md` shows it whole. The decoder is reached through the factory as "Lapwing".
namespace ovix::reduce {

namespace {

constexpr SDunlinFamily kFamily{L"Lapwing", frame_types::kLapwing};

/// A frame in a buffer: the image, and the line of its trailer.
u64 FrameStride(u16 width, u16 height) { return ImageSize(width, height) + u64{2} * width; }

/// The signature is not asked for: a frame without one is good.
bool Check(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const u64 image = ImageSize(width, height);
    if (!kFamily.Takes(type)) return probe.RefuseType(kFamily.name);
    return probe.Holds(0, image, L"pixels of 2 bytes") && probe.Holds(image, tomz::kSize, L"the trailer");
}

/// Each image of a buffer as `StoreFrame` cuts it out, which ends with the line of the trailer.
bool CheckBuffer(const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
    const CFrameProbe probe(buffer, size, fault);
    const u64 stride = FrameStride(width, height);
    if (images > 1 && !probe.Holds(0, images * stride, L"the images, each with the line of its trailer")) return false;
    const u32 stored = static_cast<u32>(std::min<u64>(stride, size));  // all images are alike
    return Check(buffer, type, width, height, stored, fault);
}

/// A last line without the signature is shown, but nobody vouches for it. The time is that of the time stamp.
void GetEvidence(const void* frame, GUID, u16 width, u16 height, u32, SFrameEvidence& evidence) {
    const bool marked = tomz::HasSignature(CDunlinFilter::TrailerOf(frame, width, height));
    evidence.mark = marked ? EFrameMark::Present : EFrameMark::Absent;
    evidence.time = marked ? EFrameTime::Full : EFrameTime::None;
    evidence.frameCounter = evidence.preset = marked;
}

void Describe(const void* frame, GUID, u16 width, u16 height, u32, TArray<SFrameField>& fields) {
    const u64 image = ImageSize(width, height);
    const u8* trailer = CDunlinFilter::TrailerOf(frame, width, height);
    fields.Add({image, tomz::kSignatureSize, L"Signature", tomz::HasSignature(trailer) ? L"TOMZ" : L"missing"});
    tomz::Describe(fields, trailer, image, tomz::Lapwing);
}

/// Remembers the preset for frames without a signature: one object serves one stream.
class CLapwingFilter final : public CDunlinFilter {
  public:
    CLapwingFilter() : CDunlinFilter(kFamily) {}

    /// Takes a frame without a signature, too: its last line is read all the same.
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest, CReduceObjectArray& objects,
                    u8& preset) override;
    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32, u8& preset) override;

    /// A buffer holds its frames one behind the other, each with its own trailer. A shorter destination gets the start
    /// of the frame. False, and nothing written, when the source does not hold what is asked for.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

  protected:
    bool ReadCounter(const u8* trailer, u64& counter) const override;
    bool ReadTime(const u8* trailer, CDateTime& time) const override;
    /// All of the byte, where `ParsePreset` takes three bits.
    u8 BasicPreset(const void*, const u8* trailer) const override { return trailer[tomz::kActivePreset]; }

  private:
    u8 PresetOf(const u8* trailer);

    u8 lastPreset_ = 0;  ///< of the last frame with a signature
};

u8 CLapwingFilter::PresetOf(const u8* trailer) {
    if (tomz::HasSignature(trailer)) lastPreset_ = trailer[tomz::kActivePreset] & 7;
    return lastPreset_;
}

bool CLapwingFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest,
                                CReduceObjectArray& objects, u8& preset) {
    if (!Takes(type)) return false;
    const u8* trailer = TrailerOf(frame, width, height);
    preset = PresetOf(trailer);
    const SDunlinObjects filled(objects, preset);
    const auto camera = objects.Get<CDunlinCameraInfoReduceObject>(-1, true);
    if (!filled || !camera) return false;

    CDunlinFrameInfoReduceObject& kept = *filled.dunlinInfo;
    LoadFields<SDunlinFrame>(kept, tomz::kFields, trailer, tomz::Lapwing);
    LoadFields<SDunlinFrame>(kept, time_code::kFields, trailer + tomz::kTimeCode);
    // The application chooses the clock, not the camera.
    kept.timeFlags = static_cast<u8>((kept.timeFlags & ~time_code::kIsUsed) | (camera->useCameraClock ? 1 : 0));
    kept.sensorTemp[2] = kept.sensorTemp[3] = 0;
    // These two count from 1 here.
    kept.videoPresetLow = static_cast<u16>(kept.videoPresetLow + 1);
    kept.activePreset = static_cast<u16>(kept.activePreset + 1);

    CFrameInfoReduceObject& info = *filled.frameInfo;
    StartFrame(info, preset, kept.frameCounter);
    if (camera->useCameraClock) {
        time_code::SetTime(info.time, trailer + tomz::kTimeCode);
    } else {
        time_code::SetTime(info.time, kept.timeStamp);
    }
    CFrameValues(info.extra).Add(tomz::kFields, trailer, tomz::Lapwing);
    if (tomz::HasSignature(trailer)) {
        filled.factoryCal->detectorTemp = kept.detectorTemp;
        filled.factoryCal->integrationTime = tomz::IntegrationTime<tomz::Lapwing>(trailer);
    } else {
        // The calibration stays, and what is shown of it stays too.
        CFieldText text;
        text.AddShortest(filled.factoryCal->integrationTime);
        info.extra.Add(L"IntegrationTime", text.c_str(), frame_values::kFloat.kind, frame_values::kFloat.format);
    }
    kept.integrationTime = TruncateTo<i32>(filled.factoryCal->integrationTime);

    if (dest.data) CopyPixels(dest.data, frame, u64{width} * height);
    return true;
}

bool CLapwingFilter::ParsePreset(void* frame, GUID type, u16 width, u16 height, u32, u8& preset) {
    if (!Takes(type)) return false;
    preset = PresetOf(TrailerOf(frame, width, height));
    return true;
}

bool CLapwingFilter::ReadCounter(const u8* trailer, u64& counter) const {
    if (!tomz::HasSignature(trailer)) return false;
    counter = LoadLittle<u32>(trailer + tomz::kFrameCounter);
    return true;
}

/// Never from the time code, whatever the camera info says.
bool CLapwingFilter::ReadTime(const u8* trailer, CDateTime& time) const {
    if (!tomz::HasSignature(trailer)) return false;
    time_code::SetTime(time, LoadLittle<u64>(trailer + tomz::kTimeStamp));
    return true;
}

bool CLapwingFilter::StoreFrame(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount,
                                u16 frameIndex, void* dest, u32 destSize) {
    const u64 stride = FrameStride(width, height);
    const u64 offset = frameIndex * stride;
    const u64 stored = std::min<u64>(destSize, stride);
    if (frameIndex >= frameCount) return false;
    // The last frame need not come with all of its line.
    if ((frameCount - 1) * stride + ImageSize(width, height) + tomz::kSignatureSize > sourceSize) return false;
    if (offset + stored > sourceSize) return false;
    if (stored) std::memcpy(dest, static_cast<const u8*>(source) + offset, stored);
    return true;
}

bool CLapwingFilter::CheckForTrigger(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount,
                                     u8, bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    const u64 stride = FrameStride(width, height);
    const u64 input = ImageSize(width, height) + tomz::kLapwingTriggerInput;
    // A narrow line holds less than the trailer: the input then stands behind the frame.
    if (frameCount == 0) return true;
    if (sourceSize < frameCount * stride || sourceSize <= (frameCount - 1) * stride + input) return false;
    for (u16 i = 0; i < frameCount && !triggered; ++i) {
        triggered = static_cast<const u8*>(source)[i * stride + input] != 0;
        if (triggered) frameIndex = i;
    }
    return true;
}

}  // namespace

bool RegisterLapwingFilter() {
    using Functions = TCreateAndDestroy<CLapwingFilter, IFilter>;
    return kFamily.Register(Functions::Create, Functions::Destroy,
                            {.check = Check,
                             .checkBuffer = CheckBuffer,
                             .form = [](GUID type, SFrameForm& form) { return kFamily.GetForm(type, form); },
                             .evidence = GetEvidence,
                             .describe = Describe});
}

}  // namespace ovix::reduce
