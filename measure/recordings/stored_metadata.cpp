#include "measure/recordings/stored_metadata.h"

#include "measure/recordings/metadata_check.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

void RequireGeometry(const CRecordingFile& file, const SFrameFormat& format, reduce::CReduceObjectArray& objects) {
    const u64 pixels = format.PixelCount();
    const reduce::SFrameForm form = FormOf(format);
    const bool plain = form.HasPixels() && !form.compressed;
    if (!pixels || !file.Pixels().frameSize || (plain && 2 * pixels > file.Pixels().frameSize))
        throw CError({.id = EError::WrongGeometry,
                      .file = file.Name(),
                      .block = BlockText(file.PixelsBlock()),
                      .offset = file.PixelsBlock().dataOffset,
                      .expected = Say("frames of ", format.width, " x ", format.height, " pixels"),
                      .found = Say(file.Pixels().frameSize, " bytes for each frame")});
    const auto source = objects.GetSourceInfo(false);
    if (!source || (source->width == format.width && source->height == format.height)) return;
    throw CError({.id = EError::WrongGeometry,
                  .file = file.Name(),
                  .block = BlockText(file.PixelsBlock()),
                  .offset = file.PixelsBlock().dataOffset,
                  .expected = Say("frames of ", source->width, " x ", source->height, " as the source info says"),
                  .found = Say(format.width, " x ", format.height)});
}

CError AsError(const CRecordingFile& file, const SFinding& finding) {
    return CError({.id = EError::MetadataDamaged,
                   .file = file.Name(),
                   .block = finding.block,
                   .offset = finding.offset,
                   .problem = finding.what,
                   .expected = finding.expected,
                   .found = finding.found,
                   .advice = "check the recording, and repair it or accept the damage"});
}

}  // namespace

SFrameFormat FormatOf(const CRecordingFile& file) {
    if (file.Break()) throw CError(*file.Break());
    if (!file.HasPixels())
        throw CError({.id = EError::NoFrames, .file = file.Name(), .problem = "holds no frames, only blocks"});
    try {
        const reduce::SPixelsHeader& pixels = file.Pixels();
        SFrameFormat format = FormatOf(pixels.pixelType, pixels.width, pixels.height);
        // Frames that hold more than plain pixels are those of a camera whose type is lost.
        if (format.filter.empty() && pixels.frameSize != PlainBytes(format))
            throw CError({.id = EError::NoDecoder,
                          .problem = "no decoder is named for its frames",
                          .expected = Say("frames of ", PlainBytes(format), " bytes of plain pixels"),
                          .found = Say(pixels.frameSize, " bytes")});
        return format;
    } catch (const CError& error) {
        throw error.Of(file.Name(), {});
    }
}

void LoadMetadata(const CRecordingFile& file, const SFrameFormat& format, const SOpenOptions& options,
                  reduce::CReduceObjectArray& objects, const Report& report) {
    CheckMetadata(file, [&](const SFinding& finding) {
        if (finding.weight == EWeight::Damage && !options.acceptDamage) throw AsError(file, finding);
        report(finding);
    });
    reduce::LoadInfoFile(file.Open(), objects, 0);
    RequireGeometry(file, format, objects);
}

u64 CountedFrames(reduce::CReduceObjectArray& objects) {
    u64 counted = 0;
    if (const auto source = objects.GetSourceInfo(false)) {
        for (const auto& preset : source->presets) counted += preset.frameCount;
    }
    return counted;
}

void CheckTotal(const CRecordingFile& file, reduce::CReduceObjectArray& objects, u64 frames, const Report& report) {
    const u64 counted = CountedFrames(objects);
    if (counted == frames) return;
    const bool finished = counted != 0;
    report(
        {.id = finished ? EFinding::CountsDiffer : EFinding::NeverFinished,
         .weight = finished ? EWeight::Damage : EWeight::Doubt,
         .offset = file.FramesAt(),
         .what = finished ? "the source info counts other frames than there are" : "the recording was never finished",
         .expected = finished ? Say(counted, " frames") : "frame counts",
         .found = finished ? Say(frames) : "none"});
}

}  // namespace ovix::measure
