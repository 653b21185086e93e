#include "reduce/filters/mvfalcon_filter.h"

#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_registration.h"
#include "reduce/filters/mvfalcon_header.h"

namespace ovix::reduce {

using namespace mvfalcon;

namespace {

constexpr wchar_t kName[] = L"MVFalcon";
constexpr u64 kCounterMax = 0xFFFFFF;
constexpr SHeaderLine kLine{.frameType = frame_types::kMVFalcon,
                            .frameName = L"MVF",
                            .headerType = frame_types::kMVFalconHeader,
                            .words = kHeaderWords,
                            .bytesRead = Word(kHeaderWords)};

void DescribeHeader(const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
    Describe(fields, static_cast<const u8*>(frame));
}

}  // namespace

CMVFalconFilter::CMVFalconFilter() : CHeaderLineFilter(kLine) {}

bool CMVFalconFilter::Register() {
    using Functions = TCreateAndDestroy<CMVFalconFilter, IFilter>;
    return RegisterHeaderLineFilter(kName, kLine, Functions::Create, Functions::Destroy,
                                    HeaderLineAnswers<kLine>(DescribeHeader));
}

const wchar_t* CMVFalconFilter::GetName() const { return kName; }
u64 CMVFalconFilter::FrameCounterMaxValue(GUID) const { return kCounterMax; }

u8 CMVFalconFilter::PresetOf(const u8* header) const { return WholePreset(header); }
u64 CMVFalconFilter::CounterOf(const u8* header) const { return FrameCounter(header); }
void CMVFalconFilter::SetTime(CDateTime& time, const u8* header, u16) const { Clock(header).SetInThisYear(time); }

bool CMVFalconFilter::FillObjects(const u8* header, GUID, u16, CReduceObjectArray& objects, u8& preset) {
    preset = Preset(header);
    const auto info = objects.Get<CFrameInfoReduceObject>(preset, true);
    if (!info) return false;
    frame_values::StartFrame(*info, preset, FrameCounter(header));
    Clock(header).Set(info->time);
    AddValues(info->extra, header);
    return true;
}

}  // namespace ovix::reduce
