#include "reduce/filters/lor_filter_ra.h"

#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_registration.h"

namespace ovix::reduce {

namespace {

constexpr wchar_t kName[] = L"LOR-RA";
constexpr u8 kTriggerFields = 1;
constexpr SHeaderLine kLine{.frameType = frame_types::kLORRA,
                            .frameName = L"LOR-RA",
                            .headerType = frame_types::kLORRAHeader,
                            .words = lor::kHeaderWords,
                            .bytesRead = lor::kHeaderSize};

void Describe(const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
    lor::Describe(fields, lor::RA, static_cast<const u8*>(frame));
}

}  // namespace

CLORFilterRA::CLORFilterRA() : CLORFilter(kLine, kTriggerFields) {}

bool CLORFilterRA::Register() {
    using Functions = TCreateAndDestroy<CLORFilterRA, IFilter>;
    return RegisterHeaderLineFilter(kName, kLine, Functions::Create, Functions::Destroy,
                                    HeaderLineAnswers<kLine>(Describe));
}

const wchar_t* CLORFilterRA::GetName() const { return kName; }

bool CLORFilterRA::FillObjects(const u8* header, GUID, u16, CReduceObjectArray& objects, u8& preset) {
    preset = PresetOf(header);
    return static_cast<bool>(FillFrameInfo(header, lor::RA, objects, preset));
}

}  // namespace ovix::reduce
