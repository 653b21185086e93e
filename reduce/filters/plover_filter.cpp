#include "reduce/filters/plover_filter.h"

#include "reduce/filters/frame_types.h"
#include "reduce/filters/generic_pixel_types.h"

namespace ovix::reduce {

namespace {

constexpr SShortRecordFamily::SType kTypes[] = {
    {frame_types::kPlover, L"Plover IR (F7M0)", UInt16, frame_types::kF7M0, true},
    // Registered as 16-bit pixels, although it is video.
    {frame_types::kPloverYUV, L"Plover YUV (UYVY)", UInt16, frame_types::kUYVY},
};
constexpr SShortRecordFamily kFamily{.name = L"Plover", .types = kTypes, .numbersFrames = true};

}  // namespace

CPloverFilter::CPloverFilter() : CShortRecordFilter(kFamily) {}

bool CPloverFilter::Register() {
    RegisterGenericPixelTypes();
    return RegisterShortRecordFilter<CPloverFilter, kFamily>();
}

bool CPloverFilter::HasFrameCounter(GUID type) const { return IsInfrared(type); }

void CPloverFilter::OverruleRecord(u8* record, u16, u16) const {
    StoreLittle<u16>(record + camera_record::kClearedByPlover, 0);
}

void CPloverFilter::FillFrameInfo(CFrameInfoReduceObject& info, const u8* record) {
    info.frameFilled = true;  // whatever the record says
    info.frameNumber = LoadLittle<u16>(record + camera_record::kFrameCounter);
}

// Video frames are number 0 here, although `ParseFrameCounter` gives the own count.
u64 CPloverFilter::BasicCounter(const u8* record) const {
    return record ? LoadLittle<u16>(record + camera_record::kFrameCounter) : 0;
}

bool CPloverFilter::ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32, u64& counter) {
    const u8* record = static_cast<const u8*>(frame) + u64{2} * width * height;
    counter = IsInfrared(type) ? LoadBig<u16>(record + camera_record::kFrameCounter) : ownCounter_;
    return true;
}

}  // namespace ovix::reduce
