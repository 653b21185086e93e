#include "core/pixel_types.h"
#include "reduce/filters/families.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/short_record_filter.h"

/// The Plover cameras. The decoder is reached through the factory as "Plover". Infrared frames bear the camera's
/// number, video frames one that is counted here. **Frames are written to**: `CShortRecordFilter` says what that asks
/// of the caller. `docs/formats/plover.md` shows a frame whole.
namespace ovix::reduce {

namespace {

constexpr SShortRecordFamily::SType kTypes[] = {
    {frame_types::kPlover, L"Plover IR (F7M0)", UInt16, frame_types::kF7M0, true},
    // Registered as 16-bit pixels, although it is video: existing recordings rely on the size of a pixel.
    {frame_types::kPloverYUV, L"Plover YUV (UYVY)", UInt16, frame_types::kUYVY},
};
constexpr SShortRecordFamily kFamily{.name = L"Plover", .types = kTypes, .numbersFrames = true};

class CPloverFilter final : public CShortRecordFilter {
  public:
    CPloverFilter() : CShortRecordFilter(kFamily) {}

    bool HasFrameCounter(GUID type) const override { return IsInfrared(type); }
    /// Takes the record for big-endian whatever its marker says, also after another operation has turned it around:
    /// `ParseBasicInfo` gives the right number in every case.
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32, u64& counter) override {
        const u8* record = static_cast<const u8*>(frame) + ImageSize(width, height);
        counter = IsInfrared(type) ? LoadBig<u16>(record + camera_record::kFrameCounter) : ownCounter_;
        return true;
    }

  private:
    void OverruleRecord(u8* record, u16, u16) const override {
        StoreLittle<u16>(record + camera_record::kClearedByPlover, 0);
    }
    void FillFrameInfo(CFrameInfoReduceObject& info, const u8* record) override {
        info.frameFilled = true;  // whatever the record says
        info.frameNumber = LoadLittle<u16>(record + camera_record::kFrameCounter);
    }
    /// Video frames are number 0 here, although `ParseFrameCounter` gives the own count: callers that scan by this one
    /// have seen 0 ever since.
    u64 BasicCounter(const u8* record) const override {
        return record ? LoadLittle<u16>(record + camera_record::kFrameCounter) : 0;
    }
};

}  // namespace

bool RegisterPloverFilter() {
    RegisterGenericPixelTypes();
    return RegisterShortRecordFilter<CPloverFilter, kFamily>();
}

}  // namespace ovix::reduce
