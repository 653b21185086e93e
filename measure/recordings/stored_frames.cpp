#include "measure/recordings/stored_frames.h"

#include "measure/text.h"

namespace ovix::measure {

namespace {

/// Without a decoder nothing is asked of the frames.
SFrameFormat FormatIn(const CRecordingFile& file) {
    const reduce::SPixelsHeader& pixels = file.Pixels();
    const CString decoder = reduce::filterFactory()->GetPixelTypeHandler(pixels.pixelType);
    if (decoder.IsEmpty()) return {.filter = {}, .pixelType = pixels.pixelType, .pixelTypeName = {}};
    return {.filter = decoder.GetUTF8(),
            .pixelType = pixels.pixelType,
            .pixelTypeName = PixelTypeName(pixels.pixelType),
            .width = pixels.width,
            .height = pixels.height};
}

}  // namespace

u32 CFrameCounts::PresetOf(const CFrameProbe& probe, std::span<const u8> frame) {
    const std::optional<u32> preset = probe.Preset(frame);
    if (!preset) throw CError({.id = EError::FrameRefused, .problem = "the decoder does not find the frame's preset"});
    if (*preset >= kPresets)
        throw CError({.id = EError::PresetOutOfRange, .expected = "a preset from 0 to 7", .found = Say(*preset)});
    return *preset;
}

CStoredFrames::CStoredFrames(const CRecordingFile& file, bool fixedPreset, const Report& report)
    : file_(file),
      probe_(FormatIn(file)),
      layout_(file.Bytes(), file.FramesAt(), std::max<u64>(file.FrameStep(), 1), file.Pixels().frameSize),
      counts_(fixedPreset) {
    layout_.FindTears(probe_, report);
}

CStoredFrames::SRead CStoredFrames::Read(u64 frame) const {
    SRead read{.bytes = std::vector<u8>(file_.FrameStep())};
    file_.Bytes().ReadAllAt(OffsetOf(frame), read.bytes);
    const std::span<const u8> pixels(read.bytes.data(), file_.Pixels().frameSize);
    const CFrameProbe probe(probe_.Format());  // one of one's own: it is no two threads'
    if (const auto fault = probe.FaultOf(pixels)) throw CError(*fault);
    if (sums_) sums_->Require(frame, pixels);
    read.preset = CFrameCounts::PresetOf(probe, pixels);
    return read;
}

}  // namespace ovix::measure
