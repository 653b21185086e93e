#include "reduce/filters/mv310_filter.h"

#include "core/pixel_types.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/packet.h"

namespace ovix::reduce {

namespace {

constexpr SShortRecordFamily::SType kTypes[] = {
    // Stands under the pictures for a screen, although its pixels are counts.
    {frame_types::kMV310, L"MV310 IR (F7M2)", UInt16, rootScreenType, true},
    // Read as YUV like the next one, whatever the name says.
    {frame_types::kMV310Screen, L"MV310 Screen (F7M3)", Opaque, rootScreenType},
    {frame_types::kMV310YUV, L"MV310 YUV (UYVY)", Opaque, rootScreenType},
};
constexpr SShortRecordFamily kFamily{.name = L"MV310", .types = kTypes, .hasPackets = true};

constexpr u32 kPacketMilliseconds = 33;  ///< in which all images of a packet are taken

}  // namespace

CMV310Filter::CMV310Filter() : CShortRecordFilter(kFamily) {}

bool CMV310Filter::Register() { return RegisterShortRecordFilter<CMV310Filter, kFamily>(); }

void CMV310Filter::OverruleRecord(u8* record, u16 width, u16 height) const {
    StoreLittle(record + camera_record::kWidth, width);
    StoreLittle(record + camera_record::kHeight, height);
    StoreLittle(record + camera_record::kLastColumn, static_cast<u16>(width - 1));
    StoreLittle(record + camera_record::kLastRow, static_cast<u16>(height - 1));
}

void CMV310Filter::FillFrameInfo(CFrameInfoReduceObject& info, const u8*) { info.frameNumber = ownCounter_++; }
u64 CMV310Filter::BasicCounter(const u8*) const { return ownCounter_; }

bool CMV310Filter::ParseFrameCounter(void*, GUID, u16, u16, u32, u64& counter) {
    counter = ownCounter_;
    return true;
}

bool CMV310Filter::StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                              u16 frameIndex, void* dest, u32 destSize) {
    if (frameCount < 2) {
        return IFilter::StoreFrame(source, sourceSize, type, width, height, frameCount, frameIndex, dest, destSize);
    }
    const SPacket packet{static_cast<const u8*>(source), sourceSize, u64{2} * width * height, frameCount};
    const bool hasTime = packet.TailSize() >= camera_record::kMilliseconds + sizeof(u32);
    if (IsInfrared(type) && !hasTime) return false;
    if (!packet.Store(frameIndex, dest, destSize)) return false;
    if (hasTime) {
        // Big-endian, as the camera sends it: nothing has turned the record yet.
        u8* milliseconds = static_cast<u8*>(dest) + packet.imageSize + camera_record::kMilliseconds;
        const u32 later = kPacketMilliseconds / frameCount * frameIndex;
        StoreBig(milliseconds, LoadBig<u32>(milliseconds) + later);
    }
    return true;
}

}  // namespace ovix::reduce
