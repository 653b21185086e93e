#include "reduce/filters/dunlin_filter.h"

#include "core/numbers.h"
#include "core/pixel_types.h"

namespace ovix::reduce {

bool CDunlinFilter::Register(const SDunlinFamily& family, CFilterFactory::Create_t create,
                             CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers) {
    const bool done = filterFactory()->Register(family.name, {family.type}, create, destroy, answers);
    RegisterPixelType(family.type, family.name, 2, UInt16, rootIRType);
    return done;
}

bool CDunlinFilter::Takes(const SDunlinFamily& family, const GUID& type) {
    return type == family.type || type == rootIRType;
}

bool CDunlinFilter::GetForm(const SDunlinFamily& family, const GUID& type, SFrameForm& form) {
    if (!Takes(family, type)) return false;
    form = SFrameForm::OfCounts(type);
    return true;
}

const wchar_t* CDunlinFilter::GetName() const { return family_.name; }
bool CDunlinFilter::HasPixels(GUID type) const { return type == family_.type; }

bool CDunlinFilter::GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) {
    if (!Takes(type)) return false;
    *pixels = frame;
    stride = 2 * width;
    return true;
}

bool CDunlinFilter::HasTime(GUID) const { return true; }
bool CDunlinFilter::HasFrameCounter(GUID) const { return true; }
u64 CDunlinFilter::FrameCounterMaxValue(GUID) const { return CUInt32::Max; }

bool CDunlinFilter::GetTriggerFields(GUID, TArray<CString>& names) const {
    names.Empty();
    names.Add(L"TriggerInput");
    return true;
}

}  // namespace ovix::reduce
