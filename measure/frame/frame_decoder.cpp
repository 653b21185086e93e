#include "measure/frame/frame_decoder.h"

#include <cstring>

#include "measure/sources/frame_probe.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

CError Refused(u64 offset, std::string expected, std::string found) {
    return CError(
        {.id = EError::FrameRefused, .offset = offset, .expected = std::move(expected), .found = std::move(found)});
}

}  // namespace

CFrameDecoder::CFrameDecoder(const CSource& source, std::chrono::milliseconds patience)
    : format_(source.Format()), form_(FormOf(format_)), filterName_(format_.filter.c_str()) {
    if (form_.compressed) helpers_.emplace(format_, patience);
}

SFrameFacts CFrameDecoder::Decode(std::span<u8> frame, reduce::CReduceObjectArray& objects, void* pixels) const {
    if (pixels && !form_.HasPixels())
        throw CError({.id = EError::FrameRefused, .problem = "frames of this pixel type are headers without pixels"});
    if (!format_.filter.empty()) return DecodeByFilter(frame, objects, pixels);
    if (frame.size() < PixelBytes())
        throw Refused(frame.size(), Say(PixelBytes(), " bytes of plain pixels"), Say(frame.size()));
    if (pixels) std::memcpy(pixels, frame.data(), PixelBytes());
    return {};
}

SFrameFacts CFrameDecoder::DecodeByFilter(std::span<u8> frame, reduce::CReduceObjectArray& objects,
                                          void* pixels) const {
    const SFrameFormat& f = format_;
    const u32 size = static_cast<u32>(frame.size());
    reduce::SFrameFault fault;
    if (!reduce::CheckFrame(filterName_, frame.data(), f.pixelType, f.width, f.height, size, &fault))
        throw Refused(fault.offset, fault.expected.GetUTF8(), fault.found.GetUTF8());
    reduce::SFrameEvidence evidence;
    reduce::GetFrameEvidence(filterName_, frame.data(), f.pixelType, f.width, f.height, size, evidence);

    // Some decoders count and remember. A new one for each frame says what that frame says.
    const auto filter = reduce::filterFactory()->Create(filterName_);
    const STypedData dest = pixels && !helpers_ ? STypedData{pixels, form_.element} : STypedData{nullptr, NoPixels};
    SFrameFacts facts;
    if (!filter || !filter->ParseFrame(frame.data(), f.pixelType, f.width, f.height, size, dest, objects, facts.preset))
        throw CError({.id = EError::FrameRefused, .problem = "the decoder does not take the frame"});
    if (const auto info = objects.GetFrameInfo(facts.preset, false); info && evidence.time != reduce::EFrameTime::None)
        facts.time = TimeOf(info->time);
    facts.yearAssumed = evidence.time == reduce::EFrameTime::WithoutYear;
    facts.namesPreset = evidence.preset;
    u8 preset = 0;
    u64 counter = 0;
    CDateTime time;
    // Not `ParseFrameCounter`: of the frames of Plover it takes the bytes as the camera sends them, and parsing may
    // have turned them around.
    if (evidence.frameCounter &&
        filter->ParseBasicInfo(frame.data(), f.pixelType, f.width, f.height, size, preset, counter, time))
        facts.counter = counter;
    if (pixels && helpers_) helpers_->Decode(frame, static_cast<u16*>(pixels));
    return facts;
}

}  // namespace ovix::measure
