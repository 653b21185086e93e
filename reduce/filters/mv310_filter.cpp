#include "core/pixel_types.h"
#include "reduce/filters/families.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/short_record_filter.h"

/// The MV310 cameras. The decoder is reached through the factory as "MV310". It numbers all frames by itself, and
/// writes the caller's geometry into the record. **Frames are written to**: `CShortRecordFilter` says what that asks of
/// the caller. `docs/formats/mv310.md` shows a frame whole.
namespace ovix::reduce {

namespace {

constexpr SShortRecordFamily::SType kTypes[] = {
    // Stands under the pictures for a screen, although its pixels are counts: existing recordings name it so.
    {frame_types::kMV310, L"MV310 IR (F7M2)", UInt16, rootScreenType, true},
    // Read as YUV like the next one, whatever the name says: that is what the camera sends.
    {frame_types::kMV310Screen, L"MV310 Screen (F7M3)", Opaque, rootScreenType},
    {frame_types::kMV310YUV, L"MV310 YUV (UYVY)", Opaque, rootScreenType},
};
constexpr SShortRecordFamily kFamily{.name = L"MV310", .types = kTypes, .hasPackets = true};

constexpr u32 kPacketMilliseconds = 33;  ///< in which all images of a packet are taken

class CMV310Filter final : public CShortRecordFilter {
  public:
    CMV310Filter() : CShortRecordFilter(kFamily) {}

    bool ParseFrameCounter(void*, GUID, u16, u16, u32, u64& counter) override {
        counter = ownCounter_;
        return true;
    }
    /// Images of a packet share one record: their times are spaced evenly over 33 milliseconds. False, with nothing
    /// written, when the sizes would not do or infrared images come without a record.
    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;

  private:
    void OverruleRecord(u8* record, u16 width, u16 height) const override {
        StoreLittle(record + camera_record::kWidth, width);
        StoreLittle(record + camera_record::kHeight, height);
        StoreLittle(record + camera_record::kLastColumn, static_cast<u16>(width - 1));
        StoreLittle(record + camera_record::kLastRow, static_cast<u16>(height - 1));
    }
    void FillFrameInfo(CFrameInfoReduceObject& info, const u8*) override { info.frameNumber = ownCounter_++; }
    u64 BasicCounter(const u8*) const override { return ownCounter_; }
};

bool CMV310Filter::StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                              u16 frameIndex, void* dest, u32 destSize) {
    if (frameCount < 2) {
        return IFilter::StoreFrame(source, sourceSize, type, width, height, frameCount, frameIndex, dest, destSize);
    }
    const SPacket packet{static_cast<const u8*>(source), sourceSize, ImageSize(width, height), frameCount};
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

}  // namespace

bool RegisterMV310Filter() { return RegisterShortRecordFilter<CMV310Filter, kFamily>(); }

}  // namespace ovix::reduce
