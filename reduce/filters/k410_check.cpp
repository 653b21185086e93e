#include "reduce/filters/k410_check.h"

#include <algorithm>

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
    const u32 size = std::min(camera_record::kSize, LoadLittle<u32>(probe.At(container + kRecordSize)));
    return probe.Holds(container + offset, std::max(size, leastRecord), L"the camera record");
}

bool CheckUncompressed(const CFrameProbe& probe, const SType& type, u16 width, u16 height) {
    const u64 image = ImageSize(width, height);
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

}  // namespace

bool CheckK410Frame(const void* frame, GUID id, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const SType* type = FindType(id);
    if (!type) return probe.Refuse(0, L"a pixel type of the K410 family", L"another pixel type");
    const u64 pixels = u64{width} * height;
    switch (type->layout) {
        case ELayout::Uncompressed:
            return CheckUncompressed(probe, *type, width, height);
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

}  // namespace ovix::reduce
