#include "reduce/filters/plover_filter.h"

#include "reduce/filters/generic_pixel_types.h"

namespace ovix::reduce {

namespace {

constexpr SShortRecordFamily::SType kTypes[] = {
    {"{FD728B9B-9B9B-4098-81E4-73EC59D2505C}"_guid, L"Plover IR (F7M0)", UInt16, generic::kF7M0, true},
    // Registered as 16-bit pixels, although it is video.
    {"{0612D7F1-A3F5-423B-8A16-F77199066239}"_guid, L"Plover YUV (UYVY)", UInt16, generic::kUYVY},
};
constexpr SShortRecordFamily kFamily{L"Plover", kTypes};

}  // namespace

CPloverFilter::CPloverFilter() : CShortRecordFilter(kFamily) {}

bool CPloverFilter::Register() {
    generic::RegisterPixelTypes();
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
