#include "reduce/filters/dunlin_filter.h"

#include "core/string.h"

namespace ovix::reduce {

bool SDunlinFamily::GetForm(const GUID& pixelType, SFrameForm& form) const {
    if (!Takes(pixelType)) return false;
    form = SFrameForm::OfCounts(pixelType);
    return true;
}

bool SDunlinFamily::Register(CFilterFactory::Create_t create, CFilterFactory::Destroy_t destroy,
                             const SFrameAnswers& answers) const {
    const bool done = filterFactory()->Register(name, {type}, create, destroy, answers);
    RegisterPixelType(type, name, 2, UInt16, rootIRType);
    return done;
}

bool CDunlinFilter::GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) {
    if (!Takes(type)) return false;
    *pixels = frame;
    stride = 2 * width;
    return true;
}

bool CDunlinFilter::ParseTime(void* frame, GUID type, u16 width, u16 height, u32, CDateTime& time) {
    return Takes(type) && ReadTime(TrailerOf(frame, width, height), time);
}

bool CDunlinFilter::ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32, u64& counter) {
    return Takes(type) && ReadCounter(TrailerOf(frame, width, height), counter);
}

bool CDunlinFilter::ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32, u8& preset, u64& counter,
                                   CDateTime& time) {
    const u8* trailer = TrailerOf(frame, width, height);
    if (!Takes(type) || !ReadCounter(trailer, counter) || !ReadTime(trailer, time)) return false;
    preset = BasicPreset(frame, trailer);
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

SDunlinObjects::SDunlinObjects(CReduceObjectArray& objects, u8 preset)
    : frameInfo(objects.Get<CFrameInfoReduceObject>(preset, true)),
      factoryCal(objects.Get<CDunlinFactoryCalReduceObject>(preset, true)),
      dunlinInfo(objects.Get<CDunlinFrameInfoReduceObject>(preset, true)) {}

void time_code::SetTime(CDateTime& time, const u8* code) {
    SDunlinFrame read;
    LoadFields(read, kFields, code);
    const int year = read.timeFlags & kYearNotValid ? time.GetYear() : 2000 + read.year;
    time.SetYYDHMS(year, read.dayOfYear, read.hours, read.minutes, read.seconds,
                   static_cast<int>(read.microseconds / 1000), static_cast<int>(read.microseconds % 1000));
}

}  // namespace ovix::reduce
