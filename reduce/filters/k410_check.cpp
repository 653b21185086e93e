#include "reduce/filters/k410_check.h"

#include <algorithm>

#include "reduce/filters/camera_record_fields.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/jpegls_stream.h"
#include "reduce/filters/k410_container.h"
#include "reduce/filters/k410_types.h"

namespace ovix::reduce {

namespace {

using namespace k410;

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
    if (!probe.Holds(kLengthSize, length, L"the JPEG-LS stream of the length told at byte 0")) return false;
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

}  // namespace

bool CheckK410Buffer(const void* buffer, GUID id, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
    const SType* type = FindType(id);
    if (!type || images < 2) return CheckK410Frame(buffer, id, width, height, size, fault);
    const CFrameProbe probe(buffer, size, fault);
    const u64 image = ImageSize(width, height);
    switch (type->layout) {
        case ELayout::Uncompressed:
            return CheckUncompressed(probe, *type, images * image) && CheckTrigger(probe, *type, image);
        case ELayout::UYVY:
        case ELayout::YUY2:
            return probe.Holds(0, images * image, L"pixels of 2 bytes");
        default:
            return probe.Refuse(0, L"one image in a buffer of this type", CString::FromFormat(L"%d", int{images}));
    }
}

bool CheckK410Frame(const void* frame, GUID id, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const SType* type = FindType(id);
    if (!type) return probe.Refuse(0, L"a pixel type of the K410 family", L"another pixel type");
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

bool GetK410Form(GUID id, SFrameForm& form) {
    const SType* type = FindType(id);
    if (!type) return false;
    const bool infrared = IsUncompressed(type) || type->layout == ELayout::JpegLs;
    form = infrared ? SFrameForm::OfCounts(id) : SFrameForm::OfColours(id);
    form.compressed = form.ownLength = type->layout == ELayout::JpegLs;
    return true;
}

void GetK410Evidence(const void* frame, GUID id, u16 width, u16 height, u32 size, SFrameEvidence& evidence) {
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

}  // namespace ovix::reduce
