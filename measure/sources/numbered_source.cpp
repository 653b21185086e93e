#include "measure/sources/numbered_source.h"

#include <algorithm>

#include "measure/text.h"

namespace ovix::measure {

CNumberedSource::CNumberedSource(std::shared_ptr<const CInputFile> file, ESource kind, SFrameFormat format)
    : IBody(std::move(file), kind, std::move(format)) {}

std::shared_ptr<CNumberedSource> CNumberedSource::OfRecording(std::shared_ptr<const CInputFile> file,
                                                              const SOpenOptions& options) {
    const CRecordingFile recording(file);
    auto source = std::make_shared<CNumberedSource>(file, ESource::Recording, FormatOf(recording));
    source->LookAtRecording(recording, options);
    return source;
}

void CNumberedSource::LookAtRecording(const CRecordingFile& file, const SOpenOptions& options) {
    const Report report = [this](SFinding finding) { Add(std::move(finding)); };
    reduce::CReduceObjectArray objects;
    LoadMetadata(file, Format(), options, objects, report);
    auto frames =
        std::make_unique<CEqualFrames>(file.Bytes(), file.FramesAt(), file.FrameStep(), file.Pixels().frameSize);
    if (!frames->Count())
        throw CError({.id = EError::NoFrames,
                      .file = file.Name(),
                      .offset = file.FramesAt(),
                      .expected = Say("frames of ", file.FrameStep(), " bytes"),
                      .found = Say(file.CutBytes(), " bytes")});
    const CFrameProbe probe(Format());
    frames->FindTears(probe, report);
    frames->ReportCut(report);
    CheckTotal(file, objects, frames->Count(), report);
    CheckEnds(file.Bytes(), *frames, probe, report);
    sums_ = SumsBeside(file, frames->Count(), report);
    if (sums_) sums_->Locate(file.Bytes(), *frames);
    layout_ = std::move(frames);
    SetObjects(objects);
    constexpr u64 kMostTried = 16;
    u64 tried = 0;
    FindOverruled([&]() -> std::optional<std::vector<u8>> {
        const auto place = tried < kMostTried ? layout_->Find(tried++) : std::nullopt;
        if (!place) return {};
        return File().Get(place->offset, place->size);
    });
}

std::shared_ptr<CNumberedSource> CNumberedSource::OfDump(std::shared_ptr<const CInputFile> file, SFrameFormat format,
                                                         const SOpenOptions& options) {
    const ESource kind = KindOf(format);
    auto source = std::make_shared<CNumberedSource>(file, kind, std::move(format));
    source->layout_ = FindLayout(*file, source->Format(), options.frameSize,
                                 [&](SFinding finding) { source->Add(std::move(finding)); });
    source->SetObjects({});
    return source;
}

std::shared_ptr<CNumberedSource> CNumberedSource::OfArray(std::shared_ptr<const CInputFile> file, SArrayFile array) {
    auto source = std::make_shared<CNumberedSource>(file, ESource::Counts, std::move(array.format));
    if (array.frames.empty())
        throw CError({.id = EError::NoFrames, .file = file->Name(), .problem = "there is not one whole frame"});
    if (array.frames.size() != array.stated)
        source->Add({.id = EFinding::FrameCut,
                     .weight = EWeight::Damage,
                     .what = "the file is cut",
                     .expected = Say(array.stated, " frames"),
                     .found = Say(array.frames.size())});
    source->layout_ = std::make_unique<CListedFrames>(std::move(array.frames));
    source->packed_ = std::move(array.packed);
    source->SetObjects({});
    return source;
}

SExtent CNumberedSource::PlaceOf(u64 number) const {
    if (const std::optional<SExtent> place = layout_->Find(number)) return *place;
    throw CError({.id = EError::NoSuchFrame,
                  .file = File().Name(),
                  .frame = number,
                  .expected = Say("one of ", layout_->Count(), " frames"),
                  .found = Say("frame ", number)});
}

SExtent CNumberedSource::Find(u64 number) const {
    if (packed_)
        throw CError({.id = EError::WrongArgument,
                      .file = File().Name(),
                      .problem = "its frames are compressed and have no place in the file"});
    return PlaceOf(number);
}

void CNumberedSource::Read(u64 number, SRawFrame& frame) const {
    const SExtent place = PlaceOf(number);
    if (place.size > CUInt32::Max)
        throw CError({.id = EError::FrameRefused,
                      .file = File().Name(),
                      .frame = number,
                      .problem = "has more bytes than a frame can have"});
    frame.number = number;
    frame.offset = place.offset;
    frame.bytes.resize(place.size);
    packed_ ? packed_->Read(number, frame.bytes) : ReadFromFile(place, frame);
    if (sums_) HoldAgainstSum(*sums_, frame);
    if (IsBigEndian(Format())) SwapBytes(frame.bytes);
}

void CNumberedSource::ReadFromFile(const SExtent& place, SRawFrame& frame) const {
    const std::size_t read = File().ReadAt(place.offset, frame.bytes);
    if (read < place.size)
        throw CError({.id = EError::FileChanged,
                      .file = File().Name(),
                      .frame = frame.number,
                      .offset = read,
                      .problem = "the file became shorter while it was read",
                      .expected = Say(place.size, " bytes"),
                      .found = Say("the end of the file after ", read)});
}

bool CNumberedSource::Next(SRawFrame&, const std::stop_token&) {
    throw CError({.id = EError::WrongArgument,
                  .file = File().Name(),
                  .problem = "its frames have numbers, by which they are read"});
}

}  // namespace ovix::measure
