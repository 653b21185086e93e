#include "measure/sources/frame_probe.h"

#include <algorithm>

#include "measure/text.h"

namespace ovix::measure {

reduce::SFrameForm FormOf(const SFrameFormat& format) {
    if (format.filter.empty())
        return format.pixelType == rootIRType ? reduce::SFrameForm::OfCounts(format.pixelType)
                                              : reduce::SFrameForm::OfColours(format.pixelType);
    reduce::SFrameForm form;
    if (reduce::GetFrameForm(CString(format.filter.c_str()), format.pixelType, form)) return form;
    throw CError(
        {.id = EError::NoDecoder,
         .problem = "the decoder \"" + format.filter + "\" does not know frames of \"" + format.pixelTypeName + "\""});
}

u64 PlainBytes(const SFrameFormat& format) { return FormOf(format).bytesPerPixel * u64{format.PixelCount()}; }

CFrameProbe::CFrameProbe(const SFrameFormat& format)
    : format_(format), name_(format.filter.c_str()), filter_(reduce::filterFactory()->Create(name_)) {}

std::optional<CError> CFrameProbe::FaultOf(std::span<const u8> frame) const {
    if (format_.filter.empty()) {
        const u64 wanted = PlainBytes(format_);
        if (frame.size() >= wanted) return {};
        return CError({.id = EError::FrameRefused,
                       .offset = frame.size(),
                       .expected = Say(wanted, " bytes of plain pixels"),
                       .found = Say(frame.size())});
    }
    reduce::SFrameFault fault;
    if (reduce::CheckFrame(name_, frame.data(), format_.pixelType, format_.width, format_.height,
                           static_cast<u32>(frame.size()), &fault))
        return {};
    return CError({.id = EError::FrameRefused,
                   .offset = fault.offset,
                   .expected = fault.expected.GetUTF8(),
                   .found = fault.found.GetUTF8()});
}

bool CFrameProbe::Passes(std::span<const u8> frame) const {
    if (format_.filter.empty()) return frame.size() >= PlainBytes(format_);
    return reduce::CheckFrame(name_, frame.data(), format_.pixelType, format_.width, format_.height,
                              static_cast<u32>(frame.size())) &&
           (!asksForSignature_ || HasSignature(frame));
}

bool CFrameProbe::TellsFrames(u64 size) const {
    const std::vector<u8> zeros(size);
    return !Passes(zeros);
}

bool CFrameProbe::HasSignature(std::span<const u8> frame) const {
    if (!filter_) return false;
    u8 preset = 0;
    u64 counter = 0;
    CDateTime time;
    return filter_->ParseBasicInfo(Copy(frame), format_.pixelType, format_.width, format_.height,
                                   static_cast<u32>(frame.size()), preset, counter, time);
}

u64 CFrameProbe::SmallestSize(std::span<const u8> bytes) const {
    if (!Passes(bytes)) {
        const auto fault = FaultOf(bytes);
        SErrorFacts facts = fault ? fault->Facts() : SErrorFacts{.id = EError::FrameRefused};
        facts.frame = 0;
        facts.problem =
            Say("no frame of \"", format_.pixelTypeName, "\" with ", format_.width, " x ", format_.height, " pixels");
        throw CError(std::move(facts));
    }
    u64 fails = 0;
    u64 passes = bytes.size();
    while (passes - fails > 1) {
        const u64 middle = fails + (passes - fails) / 2;
        (Passes(bytes.first(middle)) ? passes : fails) = middle;
    }
    return passes;
}

reduce::SFrameEvidence CFrameProbe::Evidence(std::span<const u8> frame) const {
    reduce::SFrameEvidence evidence;
    if (!format_.filter.empty())
        reduce::GetFrameEvidence(name_, frame.data(), format_.pixelType, format_.width, format_.height,
                                 static_cast<u32>(frame.size()), evidence);
    return evidence;
}

CFrameProbe::SCarried CFrameProbe::Carried(std::span<const u8> frame) const {
    const reduce::SFrameEvidence evidence = Evidence(frame);
    std::vector<u8> copy(frame.begin(), frame.end());
    reduce::CReduceObjectArray objects;
    SCarried carried;
    const auto preset = ParseMetadata(copy, objects);
    const auto info = preset ? objects.GetFrameInfo(*preset, false) : TSharedPtr<reduce::CFrameInfoReduceObject>();
    if (!info) return carried;
    if (evidence.frameCounter) carried.counter = info->frameNumber;
    if (evidence.time == reduce::EFrameTime::Full) carried.time = info->time;
    return carried;
}

u64 CFrameProbe::CounterAfter(u64 counter) const {
    return filter_ && counter == filter_->FrameCounterMaxValue(format_.pixelType) ? 0 : counter + 1;
}

std::optional<u32> CFrameProbe::Preset(std::span<const u8> frame) const {
    u32 counts[256] = {};  // a preset is a byte, whatever it says
    if (!filter_) return 0;
    if (!filter_->CountPresets(Copy(frame), static_cast<u32>(frame.size()), format_.pixelType, format_.width,
                               format_.height, 0, counts))
        return {};
    return static_cast<u32>(std::find(std::begin(counts), std::end(counts), 1u) - std::begin(counts));
}

std::optional<u8> CFrameProbe::ParseMetadata(std::span<u8> frame, reduce::CReduceObjectArray& objects) const {
    u8 preset = 0;
    if (!filter_ || FaultOf(frame) ||
        !filter_->ParseReduceObjects(frame.data(), format_.pixelType, format_.width, format_.height,
                                     static_cast<u32>(frame.size()), objects, preset))
        return {};
    return preset;
}

u8* CFrameProbe::Copy(std::span<const u8> frame) const {
    scratch_.assign(frame.begin(), frame.end());
    return scratch_.data();
}

}  // namespace ovix::measure
