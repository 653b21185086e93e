#include "reduce/filters/k410_frame.h"

#include <cstring>

#include "core/string.h"
#include "reduce/filters/camera_record_objects.h"
#include "reduce/filters/frame_probe.h"

namespace ovix::reduce::k410 {

STail FindTail(const u8* bytes, u64 size) {
    constexpr u32 kSignatureSize = sizeof kSignature;
    if (size >= kSignatureSize && HasSignature(bytes)) return {nullptr, bytes};
    if (size >= kDigitalHeaderSize + kSignatureSize && HasSignature(bytes + kDigitalHeaderSize)) {
        return {bytes, bytes + kDigitalHeaderSize};
    }
    return {};
}

bool CopyRecord(SRecord& record, const u8* container, u16 height) {
    if (!HasIndex(container)) return false;
    const u32 size = RecordHeld(container);
    std::memcpy(record.bytes, RecordInPlace(container), size);
    std::memset(record.bytes + size, 0, sizeof record.bytes - size);
    if (camera_record::IsSwapped(record.bytes)) camera_record::Swap(record.bytes);
    StoreLittle(record.bytes + camera_record::kHeight, height);
    StoreLittle(record.bytes + camera_record::kLastRow, static_cast<u16>(height - 1));
    return true;
}

namespace {

/// `leastRecord` bytes of the record are read in place, whatever size the container names.
bool CheckContainer(const CFrameProbe& probe, u64 container, u32 leastRecord) {
    if (!probe.Holds(container, kContainerSize, L"the container")) return false;
    if (!probe.HasWord(container + kFirstEntry, kRecordEntry, L"the camera record is the first entry")) return false;
    if (!probe.HasWord(container + kSecondEntry, kPixelsEntry, L"the pixels are the second entry")) return false;
    const u32 offset = LoadLittle<u32>(probe.At(container + kRecordOffset));
    const u32 size = RecordHeld(probe.At(container));
    return probe.Holds(container + offset, std::max(size, leastRecord), L"the camera record");
}

bool CheckUncompressed(const CFrameProbe& probe, const SType& type, u64 image) {
    if (!probe.Holds(0, image, L"pixels of 2 bytes") || !probe.Holds(image, sizeof kSignature, L"the tail")) {
        return false;
    }
    const STail tail = FindTail(probe.At(image), probe.Size() - image);
    if (!tail) {
        return probe.Refuse(image, L"the container's signature, here or 32 bytes further on (0x004D4B4D)",
                            CString::FromFormat(L"0x%08X", LoadLittle<u32>(probe.At(image))));
    }
    // The light operations read the record in place, up to its time.
    constexpr u32 kReadInPlace = camera_record::kMilliseconds + sizeof(u32);
    const u32 leastRecord = tail.IsPlain() && type.hasFrameCounter ? kReadInPlace : 0;
    return CheckContainer(probe, tail.IsDigital() ? image + kDigitalHeaderSize : image, leastRecord);
}

bool CheckCompressed(const CFrameProbe& probe, u16 width, u16 height) {
    if (!probe.Holds(0, kLengthSize, L"the length of the JPEG-LS stream")) return false;
    const u64 length = LoadBig<u32>(probe.At(0));
    const u64 container = kLengthSize + length;
    if (!probe.Holds(kLengthSize, length, L"the JPEG-LS stream of the length stated at byte 0")) return false;
    if (!probe.Holds(container, sizeof kSignature, L"the container's signature")) return false;
    if (!HasSignature(probe.At(container))) {
        return probe.Refuse(container, L"the container's signature (0x004D4B4D)",
                            CString::FromFormat(L"0x%08X", LoadLittle<u32>(probe.At(container))));
    }
    return CheckContainer(probe, container, 0) && CheckJpegLsStream(probe, kLengthSize, length, width, height);
}

/// A trigger is looked for behind the first image, where pixels of the second one may look like a container.
bool CheckTrigger(const CFrameProbe& probe, const SType& type, u64 image) {
    const STail tail = FindTail(probe.At(image), probe.Size() - image);
    return type.flipped || !tail.IsPlain() || CheckContainer(probe, image, 0);
}

bool Check(const void* frame, GUID id, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const SType* type = FindType(id);
    if (!type) return probe.RefuseType(L"K410");
    const u64 pixels = u64{width} * height;
    switch (type->layout) {
        case ELayout::Uncompressed:
            return CheckUncompressed(probe, *type, ImageSize(width, height));
        case ELayout::JpegLs:
            return CheckCompressed(probe, width, height);
        case ELayout::BGR:
            return probe.Holds(0, 3 * pixels, L"pixels of 3 bytes");
        case ELayout::UYVY:
        case ELayout::YUY2:
            return probe.Holds(0, 2 * pixels, L"pixels of 2 bytes");
    }
    return false;
}

bool CheckBuffer(const void* buffer, GUID id, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
    const SType* type = FindType(id);
    if (!type || images < 2) return Check(buffer, id, width, height, size, fault);
    const CFrameProbe probe(buffer, size, fault);
    const u64 image = ImageSize(width, height);
    switch (type->layout) {
        case ELayout::Uncompressed:
            return CheckUncompressed(probe, *type, images * image) && CheckTrigger(probe, *type, image);
        case ELayout::UYVY:
        case ELayout::YUY2:
            return probe.Holds(0, images * image, L"pixels of 2 bytes");
        default:
            return probe.RefuseSeveral(images);
    }
}

bool GetForm(GUID id, SFrameForm& form) {
    const SType* type = FindType(id);
    if (!type) return false;
    const bool infrared = IsUncompressed(type) || type->layout == ELayout::JpegLs;
    form = infrared ? SFrameForm::OfCounts(id) : SFrameForm::OfColours(id);
    form.compressed = form.ownLength = type->layout == ELayout::JpegLs;
    return true;
}

void GetEvidence(const void* frame, GUID id, u16 width, u16 height, u32 size, SFrameEvidence& evidence) {
    const SType& type = *FindType(id);
    const u8* bytes = static_cast<const u8*>(frame);
    if (IsUncompressed(&type)) {
        const u64 image = ImageSize(width, height);
        const STail tail = FindTail(bytes + image, size - image);
        const u32 record = RecordHeld(tail.container);
        camera_record::GetEvidence(evidence, RecordInPlace(tail.container), record);
        const bool numbered = tail.IsPlain() && type.hasFrameCounter;  // else nothing is taken from the record
        if (numbered && record >= camera_record::kMilliseconds + sizeof(u32)) evidence.time = EFrameTime::Full;
        evidence.frameCounter = tail.IsDigital() || (numbered && record >= camera_record::kFrameCounter + sizeof(u16));
    } else if (type.layout == ELayout::JpegLs) {
        evidence.width = width;  // the stream names both, and the check holds them against the caller's
        evidence.height = height;
    } else {
        return;
    }
    evidence.mark = EFrameMark::Present;  // the container's signature, or the check would have refused the frame
}

constexpr STableField kContainerFields[] = {
    {0, 4, L"Signature", kDescribedOnly, HexText<LoadLittle<u32>, 8>},
    {kFirstEntry, 2, L"FirstEntry", kDescribedOnly, DecimalText<LoadLittle<u16>>},
    {kRecordOffset, 4, L"RecordOffset", kDescribedOnly, DecimalText<LoadLittle<u32>>, L"bytes"},
    {kRecordSize, 4, L"RecordSize", kDescribedOnly, DecimalText<LoadLittle<u32>>, L"bytes"},
    {kSecondEntry, 2, L"SecondEntry", kDescribedOnly, DecimalText<LoadLittle<u16>>},
    {kPixelsSwapped, 2, L"PixelsSwapped", kDescribedOnly, DecimalText<LoadLittle<u16>>},
};

void DescribeContainer(TArray<SFrameField>& fields, const u8* frame, const u8* container) {
    const u64 at = static_cast<u64>(container - frame);
    DescribeFields(fields, kContainerFields, container, at);
    const u32 recordSize = RecordHeld(container);
    camera_record::Describe(fields, RecordInPlace(container), recordSize,
                            at + LoadLittle<u32>(container + kRecordOffset));
}

void DescribeUncompressed(TArray<SFrameField>& fields, const u8* frame, u64 image, u64 size) {
    const STail tail = FindTail(frame + image, size - image);
    if (tail.IsDigital()) DescribeFields(fields, kDigitalHeaderFields, tail.digitalHeader, image);
    DescribeContainer(fields, frame, tail.container);
}

void DescribeCompressed(TArray<SFrameField>& fields, const u8* frame) {
    const u32 length = LoadBig<u32>(frame);
    const CString stated = CUInt32::ToString(length) + L" bytes";
    fields.Add({0, kLengthSize, L"ImageLength", stated});
    fields.Add({kLengthSize, length, L"Image", L"a JPEG-LS stream of " + stated});
    DescribeContainer(fields, frame, frame + kLengthSize + length);
}

void Describe(const void* frame, GUID id, u16 width, u16 height, u32 frameSize, TArray<SFrameField>& fields) {
    const u8* bytes = static_cast<const u8*>(frame);
    const SType* type = FindType(id);
    if (IsUncompressed(type)) DescribeUncompressed(fields, bytes, ImageSize(width, height), frameSize);
    if (type->layout == ELayout::JpegLs) DescribeCompressed(fields, bytes);
}

}  // namespace

constinit const SFrameAnswers kAnswers{
    .check = Check, .checkBuffer = CheckBuffer, .form = GetForm, .evidence = GetEvidence, .describe = Describe};

}  // namespace ovix::reduce::k410
