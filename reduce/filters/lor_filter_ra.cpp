#include "reduce/filters/lor_filter_ra.h"

#include "reduce/filters/header_line_registration.h"

namespace ovix::reduce {

namespace {

constexpr wchar_t kName[] = L"LOR-RA";
constexpr u8 kTriggerFields = 1;
constexpr SHeaderLine kLine{.frameType = "{B3CC3849-01F1-499C-90E6-4799CE2979FF}"_guid,
                            .frameName = L"LOR-RA",
                            .headerType = "{ABD16A8F-BB4A-415C-9BC6-7AB387743F25}"_guid,
                            .words = lor::kHeaderWords,
                            .bytesRead = lor::kHeaderSize};

void Describe(const void* frame, GUID, u16, u16, u32, TArray<SFrameField>& fields) {
    lor::Describe(fields, lor::RA, static_cast<const u8*>(frame));
}

}  // namespace

CLORFilterRA::CLORFilterRA() : CLORFilter(kLine, kTriggerFields) {}

bool CLORFilterRA::Register() {
    using Functions = TCreateAndDestroy<CLORFilterRA, IFilter>;
    return RegisterHeaderLineFilter(kName, kLine, Functions::Create, Functions::Destroy, CheckHeaderLineFrame<kLine>,
                                    Describe);
}

const wchar_t* CLORFilterRA::GetName() const { return kName; }

bool CLORFilterRA::FillObjects(const u8* header, GUID, u16, CReduceObjectArray& objects, u8& preset) {
    preset = PresetOf(header);
    return static_cast<bool>(FillFrameInfo(header, lor::RA, objects, preset));
}

}  // namespace ovix::reduce
