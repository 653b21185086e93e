#include "measure/sources/numbered_source.h"

#include <algorithm>

#include "measure/text.h"

namespace ovix::measure {

SFrameFormat FormatOf(const CRecordingFile& file) {
    if (file.Break()) throw CError(*file.Break());
    if (!file.HasPixels())
        throw CError({.id = EError::NoFrames, .file = file.Name(), .problem = "holds no frames, only blocks"});
    try {
        return FormatOf(file.Pixels().pixelType, file.Pixels().width, file.Pixels().height);
    } catch (const CError& error) {
        throw error.Of(file.Name(), {});
    }
}

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

CNumberedSource::CNumberedSource(std::shared_ptr<const CInputFile> file, ESource kind, SFrameFormat format)
    : IBody(std::move(file), kind, std::move(format)) {}

std::shared_ptr<CNumberedSource> CNumberedSource::OfRecording(std::shared_ptr<const CInputFile> file,
                                                              const SOpenOptions&) {
    const CRecordingFile recording(file);
    auto source = std::make_shared<CNumberedSource>(file, ESource::Recording, FormatOf(recording));
    source->LookAtRecording(recording);
    return source;
}

void CNumberedSource::LookAtRecording(const CRecordingFile& file) {
    reduce::CReduceObjectArray objects;
    reduce::LoadInfoFile(file.Open(), objects, 0);
    RequireGeometry(file, Format(), objects);
    auto frames =
        std::make_unique<CEqualFrames>(file.Bytes(), file.FramesAt(), file.FrameStep(), file.Pixels().frameSize);
    if (!frames->Count())
        throw CError({.id = EError::NoFrames,
                      .file = file.Name(),
                      .offset = file.FramesAt(),
                      .expected = Say("frames of ", file.FrameStep(), " bytes"),
                      .found = Say(file.CutBytes(), " bytes")});
    frames->FindTears(CFrameProbe(Format()), [this](SFinding finding) { Add(std::move(finding)); });
    layout_ = std::move(frames);
    SetObjects(objects);
    FindOverruled(FirstFrames());
}

std::shared_ptr<CNumberedSource> CNumberedSource::OfDump(std::shared_ptr<const CInputFile> file, SFrameFormat format,
                                                         const SOpenOptions& options) {
    const bool counts = format.filter.empty();
    auto source = std::make_shared<CNumberedSource>(file, counts ? ESource::Counts : ESource::Dump, std::move(format));
    source->bigEndian_ = source->Format().pixelTypeName == "counts-be";
    source->layout_ = FindLayout(*file, source->Format(), options.frameSize,
                                 [&](SFinding finding) { source->Add(std::move(finding)); });
    source->SetObjects({});
    return source;
}

std::vector<std::vector<u8>> CNumberedSource::FirstFrames() const {
    constexpr u64 kMostTried = 16;
    std::vector<std::vector<u8>> frames;
    SRawFrame frame;
    for (u64 i = 0; i < kMostTried && layout_->Find(i); ++i) {
        Read(i, frame);
        frames.push_back(std::move(frame.bytes));
    }
    return frames;
}

void CNumberedSource::Read(u64 number, SRawFrame& frame) const {
    const std::optional<SExtent> place = layout_->Find(number);
    if (!place)
        throw CError({.id = EError::NoSuchFrame,
                      .file = File().Name(),
                      .frame = number,
                      .expected = Say("one of ", layout_->Count(), " frames"),
                      .found = Say("frame ", number)});
    if (place->size > CUInt32::Max)
        throw CError({.id = EError::FrameRefused,
                      .file = File().Name(),
                      .frame = number,
                      .problem = "has more bytes than a frame can have"});
    frame.number = number;
    frame.offset = place->offset;
    frame.bytes.resize(place->size);
    const std::size_t read = File().ReadAt(place->offset, frame.bytes);
    if (read < place->size)
        throw CError({.id = EError::FileChanged,
                      .file = File().Name(),
                      .frame = number,
                      .offset = read,
                      .problem = "the file became shorter while it was read",
                      .expected = Say(place->size, " bytes"),
                      .found = Say("the end of the file after ", read)});
    if (bigEndian_) {
        for (std::size_t i = 0; i + 1 < frame.bytes.size(); i += 2) std::swap(frame.bytes[i], frame.bytes[i + 1]);
    }
}

bool CNumberedSource::Next(SRawFrame&) {
    throw CError({.id = EError::WrongArgument,
                  .file = File().Name(),
                  .problem = "its frames have numbers, by which they are read"});
}

}  // namespace ovix::measure
