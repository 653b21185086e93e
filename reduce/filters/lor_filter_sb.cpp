#include "reduce/filters/lor_filter_sb.h"

#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_registration.h"
#include "reduce/objects/fov_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"

namespace ovix::reduce {

namespace {

constexpr wchar_t kName[] = L"LOR-SB";
constexpr u8 kTriggerFields = 2;
constexpr SHeaderLine kLine{.frameType = frame_types::kLORSB,
                            .frameName = L"LOR-SB",
                            .headerType = frame_types::kLORSBHeader,
                            .words = lor::kHeaderWords,
                            .bytesRead = lor::kLensBlockEnd};

void Describe(const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
    const u8* header = static_cast<const u8*>(frame);
    lor::Describe(fields, lor::ModelOfSB(header), header);
}

bool HasFixedPreset(CReduceObjectArray& objects) {
    const TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(false);
    return source && source->fixedPreset;
}

}  // namespace

CLORFilterSB::CLORFilterSB() : CLORFilter(kLine, kTriggerFields) {}

bool CLORFilterSB::Register() {
    using Functions = TCreateAndDestroy<CLORFilterSB, IFilter>;
    return RegisterHeaderLineFilter(kName, kLine, Functions::Create, Functions::Destroy,
                                    HeaderLineAnswers<kLine>(Describe));
}

const wchar_t* CLORFilterSB::GetName() const { return kName; }

bool CLORFilterSB::FillObjects(const u8* header, GUID type, u16, CReduceObjectArray& objects, u8& preset) {
    // Only headers that were kept apart obey the source.
    preset = type == kLine.headerType && HasFixedPreset(objects) ? u8{0} : PresetOf(header);
    const TSharedPtr<CFrameInfoReduceObject> info = FillFrameInfo(header, lor::ModelOfSB(header), objects, preset);
    if (!info) return false;
    if (!lor::HasLensBlock(header)) return true;

    const TSharedPtr<CFOVReduceObject> view = objects.GetFOV(true);
    if (!view) return false;
    view->valid = true;
    view->IHFOV = view->IVFOV = lor::LensIFOV(header);
    lor::AddLensValues(info->extra, header);
    return true;
}

}  // namespace ovix::reduce
