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

void CFrameCounts::Add(const CFrameProbe& probe, std::span<const u8> frame) {
    const std::optional<u32> preset = probe.Preset(frame);
    if (!preset) throw CError({.id = EError::FrameRefused, .problem = "the decoder does not find the frame's preset"});
    if (*preset >= kPresets)
        throw CError({.id = EError::PresetOutOfRange, .expected = "a preset from 0 to 7", .found = Say(*preset)});
    ++counts_[fixedPreset_ ? 0 : *preset];
}

CStoredFrames::CStoredFrames(const CRecordingFile& file, bool fixedPreset, const Report& report)
    : file_(file),
      probe_(FormatIn(file)),
      layout_(file.Bytes(), file.FramesAt(), std::max<u64>(file.FrameStep(), 1), file.Pixels().frameSize),
      counts_(fixedPreset) {
    layout_.FindTears(probe_, report);
}

std::span<const u8> CStoredFrames::Read(u64 frame) {
    bytes_.resize(file_.FrameStep());
    file_.Bytes().ReadAllAt(OffsetOf(frame), bytes_);
    const std::span<const u8> pixels(bytes_.data(), file_.Pixels().frameSize);
    if (const auto fault = probe_.FaultOf(pixels)) throw CError(*fault);
    if (sums_) RequireSum(*sums_, frame, pixels);
    counts_.Add(probe_, pixels);
    return bytes_;
}

}  // namespace ovix::measure
