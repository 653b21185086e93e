#include "reduce/filters/header_line_family.h"

#include "core/pixel_types.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_probe.h"

namespace ovix::reduce {

void SDayClock::AddTo(CFieldText& text) const {
    const auto add = [&](int value, u32 width) { return text.AddDecimal(static_cast<u64>(value), width), &text; };
    add(day, 3)->Add(L":");
    add(hours, 2)->Add(L":");
    add(minutes, 2)->Add(L":");
    add(seconds, 2)->Add(L".");
    add(milliseconds, 3);
    add(microseconds, 3);
}

SDayClock ClockOfDigits(const u8* words) {
    const auto low = [&](u32 word) { return u32{words[Word(word)]}; };
    const int day = FromBcd(low(7) << 8 | low(6), 4);
    return {.day = day >= 1234 ? day - 1233 : day,
            .hours = FromBcd(low(5), 2),
            .minutes = FromBcd(low(4), 2),
            .seconds = FromBcd(low(3), 2),
            .milliseconds = FromBcd(low(2) << 4 | low(1) >> 4, 3),
            .microseconds = FromBcd((low(1) & 15) << 8 | low(0), 3)};
}

bool RegisterHeaderLineFilter(const wchar_t* name, const SHeaderLine& line, CFilterFactory::Create_t create,
                              CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers) {
    const bool done = filterFactory()->Register(name, {line.frameType, line.headerType}, create, destroy, answers);
    RegisterPixelType(line.frameType, line.frameName, 2, UInt16, rootIRType);
    return done;
}

bool CheckHeaderLine(const SHeaderLine& line, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                     SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    if (!line.Takes(type)) return probe.RefuseType(line.frameName);
    if (!probe.Holds(0, line.bytesRead, L"the header")) return false;
    if (type == line.headerType) return true;
    return probe.Holds(ImageSize(width, 1), ImageSize(width, height), L"pixels of 2 bytes behind the header line");
}

bool GetHeaderLineForm(const SHeaderLine& line, GUID type, SFrameForm& form) {
    if (!line.Takes(type)) return false;
    form = type == line.headerType ? SFrameForm::OfHeader(line.frameType) : SFrameForm::OfCounts(type);
    return true;
}

void GetHeaderLineEvidence(const void*, GUID, u16, u16, u32, SFrameEvidence& evidence) {
    evidence.time = EFrameTime::WithoutYear;
    evidence.frameCounter = evidence.preset = true;
}

}  // namespace ovix::reduce
