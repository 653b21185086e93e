#include "reduce/filters/short_record_filter.h"

#include <algorithm>
#include <cstring>

#include "core/pixel_types.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_probe.h"

namespace ovix::reduce {

namespace {

u8* NativeRecord(u8* frame, u16 width, u16 height) {
    u8* record = frame + ImageSize(width, height);
    // The marker is turned with the rest, so that a second parse of the buffer finds the native order.
    if (camera_record::IsSwapped(record)) camera_record::SwapShort(record);
    return record;
}

}  // namespace

const SShortRecordFamily::SType* SShortRecordFamily::Find(const GUID& type) const {
    const auto at = std::find_if(types.begin(), types.end(), [&](const SType& known) { return known.id == type; });
    return at == types.end() ? nullptr : &*at;
}
bool SShortRecordFamily::IsInfrared(const GUID& type) const {
    const SType* known = Find(type);
    return known && known->infrared;
}

const wchar_t* CShortRecordFilter::GetName() const { return family_.name; }
bool CShortRecordFilter::HasPixels(GUID type) const { return IsInfrared(type); }
bool CShortRecordFilter::HasTime(GUID type) const { return IsInfrared(type); }

bool CShortRecordFilter::GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) {
    if (!IsInfrared(type)) return false;
    *pixels = frame;
    stride = 2 * width;
    return true;
}

bool CShortRecordFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest,
                                    CReduceObjectArray& objects, u8& preset) {
    const SCameraRecordObjects filled(objects);
    preset = 0;
    const SShortRecordFamily::SType* known = family_.Find(type);
    if (!known || !filled) return false;
    u8* bytes = static_cast<u8*>(frame);
    return known->infrared ? ParseInfrared(bytes, width, height, dest, filled)
                           : ParseVideo(bytes, width, height, dest, filled);
}

bool CShortRecordFilter::ParseInfrared(u8* frame, u16 width, u16 height, STypedData dest,
                                       const SCameraRecordObjects& objects) {
    if (dest.type != UInt16 && dest.type != NoPixels) return false;
    u8* record = NativeRecord(frame, width, height);
    OverruleRecord(record, width, height);
    objects.KeepRecord(record, camera_record::kShortSize, nullptr);
    objects.FillFromRecord(record);
    camera_record::SetTime(objects.frameInfo->time, record);
    objects.frameInfo->extra.Clear();
    FillFrameInfo(*objects.frameInfo, record);
    if (dest.data) std::memcpy(dest.data, frame, ImageSize(width, height));
    return true;
}

bool CShortRecordFilter::ParseVideo(const u8* frame, u16 width, u16 height, STypedData dest,
                                    const SCameraRecordObjects& objects) {
    if (dest.type != Opaque && dest.type != NoPixels) return false;
    objects.FillForVideo(ownCounter_++);
    if (dest.data) YuvToRGB(static_cast<u8*>(dest.data), frame, u64{width} * height, kUYVYOrder);
    return true;
}

bool CShortRecordFilter::ParsePreset(void*, GUID, u16, u16, u32, u8& preset) {
    preset = 0;
    return true;
}

bool CShortRecordFilter::ParseTime(void* frame, GUID type, u16 width, u16 height, u32, CDateTime& time) {
    if (IsInfrared(type)) {
        camera_record::SetTime(time, NativeRecord(static_cast<u8*>(frame), width, height));
    } else {
        time.Now();
    }
    return true;
}

bool CShortRecordFilter::ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32, u8& preset, u64& counter,
                                        CDateTime& time) {
    preset = 0;
    if (IsInfrared(type)) {
        const u8* record = NativeRecord(static_cast<u8*>(frame), width, height);
        counter = BasicCounter(record);
        camera_record::SetTime(time, record);
    } else {
        counter = BasicCounter(nullptr);
        time.Now();
    }
    return true;
}

bool RegisterShortRecordFilter(const SShortRecordFamily& family, CFilterFactory::Create_t create,
                               CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers) {
    TArray<GUID> ids;
    for (const auto& type : family.types) ids.Add(type.id);
    const bool done = filterFactory()->Register(family.name, ids, create, destroy, answers);
    for (const auto& type : family.types) RegisterPixelType(type.id, type.name, 2, type.element, type.base);
    return done;
}

bool CheckShortRecord(const SShortRecordFamily& family, const void* buffer, GUID id, u16 width, u16 height, u16 images,
                      u32 size, SFrameFault* fault) {
    const CFrameProbe probe(buffer, size, fault);
    const SShortRecordFamily::SType* type = family.Find(id);
    if (!type) {
        return probe.RefuseType(family.name);
    }
    if (images > 1 && !family.hasPackets) {
        return probe.RefuseSeveral(images);
    }
    const u64 pixels = images * ImageSize(width, height);
    return probe.Holds(0, pixels, L"pixels of 2 bytes") &&
           (!type->infrared || probe.Holds(pixels, camera_record::kShortSize, L"the camera record"));
}

bool GetShortRecordForm(const SShortRecordFamily& family, GUID id, SFrameForm& form) {
    const SShortRecordFamily::SType* type = family.Find(id);
    if (!type) return false;
    form = type->infrared ? SFrameForm::OfCounts(id) : SFrameForm::OfColours(id);
    return true;
}

void GetShortRecordEvidence(const SShortRecordFamily& family, const void* frame, GUID type, u16 width, u16 height,
                            SFrameEvidence& evidence) {
    if (!family.IsInfrared(type)) return;
    const u8* record = static_cast<const u8*>(frame) + ImageSize(width, height);
    evidence.time = EFrameTime::Full;
    evidence.frameCounter = family.numbersFrames;
    camera_record::GetEvidence(evidence, record, camera_record::kShortSize);
}

void DescribeShortRecord(const SShortRecordFamily& family, const void* frame, GUID type, u16 width, u16 height,
                         TArray<SFrameField>& fields) {
    if (!family.IsInfrared(type)) return;
    const u64 image = ImageSize(width, height);
    camera_record::Describe(fields, static_cast<const u8*>(frame) + image, camera_record::kShortSize, image);
}

}  // namespace ovix::reduce
