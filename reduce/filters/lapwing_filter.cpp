#include "reduce/filters/lapwing_filter.h"

#include <algorithm>
#include <cstring>

#include "reduce/filters/copy_pixels.h"
#include "reduce/filters/dunlin_camera_info_reduce_object.h"
#include "reduce/filters/dunlin_objects.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/tomz_trailer.h"

namespace ovix::reduce {

namespace {

constexpr SDunlinFamily kFamily{L"Lapwing", frame_types::kLapwing};

/// A frame in a buffer: the image, and the line of its trailer.
u64 FrameStride(u16 width, u16 height) { return CDunlinFilter::ImageSize(width, height) + u64{2} * width; }

/// The signature is not asked for: a frame without one is good.
bool CheckLapwingFrame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const u64 image = CDunlinFilter::ImageSize(width, height);
    if (!CDunlinFilter::Takes(kFamily, type)) return probe.Refuse(0, L"a Lapwing frame", L"another pixel type");
    return probe.Holds(0, image, L"pixels of 2 bytes") && probe.Holds(image, tomz::kSize, L"the trailer");
}

/// Each image of a buffer as `StoreFrame` cuts it out, which ends with the line of the trailer.
bool CheckLapwingBuffer(const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size,
                        SFrameFault* fault) {
    const CFrameProbe probe(buffer, size, fault);
    const u64 stride = FrameStride(width, height);
    if (images > 1 && !probe.Holds(0, images * stride, L"the images, each with the line of its trailer")) return false;
    const u32 stored = static_cast<u32>(std::min<u64>(stride, size));  // all images are alike
    return CheckLapwingFrame(buffer, type, width, height, stored, fault);
}

bool GetLapwingForm(GUID type, SFrameForm& form) { return CDunlinFilter::GetForm(kFamily, type, form); }

/// A last line without the signature is shown, but nobody vouches for it. The time is that of the time stamp.
void GetLapwingEvidence(const void* frame, GUID, u16 width, u16 height, u32, SFrameEvidence& evidence) {
    const u8* trailer = static_cast<const u8*>(frame) + CDunlinFilter::ImageSize(width, height);
    const bool marked = tomz::HasSignature(trailer);
    evidence.mark = marked ? EFrameMark::Present : EFrameMark::Absent;
    evidence.time = marked ? EFrameTime::Full : EFrameTime::None;
    evidence.frameCounter = evidence.preset = marked;
}

void DescribeLapwingFrame(const void* frame, GUID, u16 width, u16 height, u32, TArray<SFrameField>& fields) {
    const u64 image = CDunlinFilter::ImageSize(width, height);
    const u8* trailer = static_cast<const u8*>(frame) + image;
    fields.Add({image, tomz::kSignatureSize, L"Signature", tomz::HasSignature(trailer) ? L"TOMZ" : L"missing"});
    DescribeTrailer(fields, tomz::kLapwing, trailer, image);
}

/// For the light operations, which need the signature and never take the time code.
bool LoadClock(SDunlinTrailer& values, const u8* trailer) {
    if (!tomz::HasSignature(trailer)) return false;
    LoadTrailer(values, tomz::kClock, trailer);
    values.timeFlags = 0;
    return true;
}

}  // namespace

CLapwingFilter::CLapwingFilter() : CDunlinFilter(kFamily) {}

bool CLapwingFilter::Register() {
    using Functions = TCreateAndDestroy<CLapwingFilter, IFilter>;
    return CDunlinFilter::Register(kFamily, Functions::Create, Functions::Destroy,
                                   {.check = CheckLapwingFrame,
                                    .checkBuffer = CheckLapwingBuffer,
                                    .form = GetLapwingForm,
                                    .evidence = GetLapwingEvidence,
                                    .describe = DescribeLapwingFrame});
}

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

    SDunlinTrailer values;
    LoadTrailer(values, tomz::kLapwing, trailer);
    // Without a signature the calibration stays, and what is shown of it stays too.
    if (tomz::HasSignature(trailer)) filled.FillFactoryCal(values);
    values.integrationExactTime = filled.factoryCal->integrationTime;
    // The application chooses the clock, not the camera.
    values.timeFlags = static_cast<u8>((values.timeFlags & 0xFE) | (camera->useCameraClock ? 1 : 0));
    // These two count from 1 here, and the trailer says nothing of the third.
    values.videoPresetLow = static_cast<u16>(values.videoPresetLow + 1);
    values.activePreset = static_cast<u16>(values.activePreset + 1);
    values.inputSignalGrabbed = filled.dunlinInfo->inputSignalGrabbed;
    filled.FillFrame(values, tomz::kLapwing);

    if (dest.data) CopyPixels(dest.data, frame, u64{width} * height);
    return true;
}

bool CLapwingFilter::ParsePreset(void* frame, GUID type, u16 width, u16 height, u32, u8& preset) {
    if (!Takes(type)) return false;
    preset = PresetOf(TrailerOf(frame, width, height));
    return true;
}

bool CLapwingFilter::ParseTime(void* frame, GUID type, u16 width, u16 height, u32, CDateTime& time) {
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, TrailerOf(frame, width, height))) return false;
    SetTrailerTime(time, values);
    return true;
}

bool CLapwingFilter::ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32, u64& counter) {
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, TrailerOf(frame, width, height))) return false;
    counter = values.frameCounter;
    return true;
}

bool CLapwingFilter::ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32, u8& preset, u64& counter,
                                    CDateTime& time) {
    const u8* trailer = TrailerOf(frame, width, height);
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, trailer)) return false;
    SetTrailerTime(time, values);
    counter = values.frameCounter;
    preset = trailer[tomz::kActivePreset];  // all of the byte, where `ParsePreset` takes three bits
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

}  // namespace ovix::reduce
