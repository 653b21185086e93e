#include <algorithm>

#include "measure/recordings/output_file.h"
#include "measure/recordings/recording.h"
#include "measure/recordings/stored_frames.h"
#include "measure/sources/input_file.h"
#include "measure/sources/source_body.h"
#include "measure/text.h"

namespace ovix::measure {

using reduce::SInfoFileBlock;
using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

TSharedPtr<SourceInfo> RequireInfo(reduce::CReduceObjectArray& objects) {
    auto info = objects.GetSourceInfo(false);
    if (!info) throw CError({.id = EError::WrongArgument, .problem = "a recording needs a source info"});
    return info;
}

/// The packet: the lines of an image that a stored frame takes, where those are whole.
void SetPacket(SourceInfo& info, u32 frameSize) {
    const u32 line = u32{PixelWidth(info.pixelType)} * info.frameWidth;
    if (!line || frameSize % line || frameSize / line > 0xFFFF) return;
    info.packetWidth = info.frameWidth;
    info.packetHeight = static_cast<u16>(frameSize / line);
}

const std::filesystem::path& NotTheInput(const std::filesystem::path& path, const SWriteOptions& options) {
    if (options.input && options.input->IsFile(path))
        throw CError({.id = EError::FileIsInput, .file = path.string(), .problem = "is what is read"});
    return path;
}

}  // namespace

struct CRecordingWriter::SBody {
    SBody(const std::filesystem::path& path, reduce::CReduceObjectArray& objects, const SFrameFormat& of, u32 size,
          const SWriteOptions& asked)
        : options(asked),
          format(of),
          counts(RequireInfo(objects)->fixedPreset),
          frameSize(size),
          output(NotTheInput(path, asked), asked.overwrite,
                 asked.keepPart ? COutputFile::EPart::Kept : COutputFile::EPart::Named),
          library(output),
          file(BorrowShared<IFile>(library)) {
        const auto info = RequireInfo(objects);
        SetPacket(*info, frameSize);
        reduce::SPixelsHeader header;
        reduce::InitPixelsHeader(header, info, options.unpacked);
        header.frameSize = header.frameSize2 = frameSize;
        Require(reduce::StartKRTFile(file, objects, header), "the metadata");
        framesAt = output.Size();
    }

    void Require(bool done, const char* what) const {
        if (!done)
            throw CError({.id = EError::FileUnwritable,
                          .file = output.Target().string(),
                          .problem = Say("cannot write ", what)});
    }

    /// With a decoder of its own, since some remember: each frame counts for what it says itself.
    SReadyFrame Prepare(std::span<const u8> frame) const {
        if (frame.size() > frameSize)
            throw CError({.id = EError::FrameRefused,
                          .expected = Say("at most ", frameSize, " bytes, as all frames of the recording"),
                          .found = Say(frame.size())});
        const auto filter = reduce::filterFactory()->Create(CString(format.filter.c_str()));
        const CFrameProbe probe(format);
        if (const auto fault = probe.FaultOf(frame)) throw CError(*fault);
        SReadyFrame ready{.bytes = std::vector<u8>(frameSize)};
        if (!filter && frameSize != PlainBytes(format))
            throw CError({.id = EError::FrameRefused,
                          .expected = Say(PlainBytes(format), " bytes of plain pixels and nothing behind them"),
                          .found = Say(frameSize)});
        if (!filter)
            std::ranges::copy(frame, ready.bytes.begin());
        else if (!filter->StoreFrame(frame.data(), static_cast<u32>(frame.size()), format.pixelType, format.width,
                                     format.height, 1, 0, ready.bytes.data(), frameSize))
            throw CError({.id = EError::FrameRefused, .problem = "the decoder does not store the frame"});
        if (const auto fault = probe.FaultOf(ready.bytes)) throw CError(*fault);
        ready.preset = CFrameCounts::PresetOf(probe, ready.bytes);
        if (options.checksums) ready.sum = CrcOf(ready.bytes);
        return ready;
    }

    /// Calls `use(block, record)` for the stored source info.
    template <class Use>
    void WithStoredInfo(Use&& use) {
        reduce::InfoFileDirectory blocks;
        file->SeekToBegin();
        Require(reduce::ScanInfoFile(file, blocks, 0), "the metadata so that they can be read again");
        for (SInfoFileBlock& block : blocks) {
            if (block.typeID != SourceInfo::typeID) continue;
            std::vector<u8> record(SourceInfo::RecordSize);
            file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
            Require(block.size == record.size() && file->ReadBytes(record.data(), SourceInfo::RecordSize),
                    "the source info so that it can be read again");
            use(block, record);
        }
    }
    /// The library's part ends with the fourth preset.
    void PatchCounts() {
        const auto isNone = [](u32 n) { return n == 0; };
        if (std::all_of(counts.Data() + 4, counts.Data() + CFrameCounts::kPresets, isNone)) return;
        WithStoredInfo([&](SInfoFileBlock& block, std::vector<u8>& record) {
            SourceInfo::UpdateNumFrames(record.data(), SourceInfo::RecordSize, counts.Data(), CFrameCounts::kPresets);
            block.crc = CrcOf(record);
            file->Seek(static_cast<i64>(block.headerOffset), IFile::FromStart);
            Require(reduce::WriteInfoFileBlock(file, block) && file->WriteBytes(record.data(), SourceInfo::RecordSize),
                    "the frame counts");
        });
    }
    /// The library does not say whether the last writes arrived.
    void RequireFinished() {
        WithStoredInfo([&](const SInfoFileBlock& block, std::vector<u8>& record) {
            const std::vector<u8> found = record;
            SourceInfo::UpdateNumFrames(record.data(), SourceInfo::RecordSize, counts.Data(), CFrameCounts::kPresets);
            Require(block.crc == CrcOf(found) && found == record, "the frame counts");
        });
    }
    u32 MetadataCrc() const {
        std::vector<u8> bytes(framesAt);
        Require(output.ReadAt(0, bytes) == framesAt, "the metadata so that they can be read again");
        return CrcOf(bytes);
    }

    SWriteOptions options;
    SFrameFormat format;
    CFrameCounts counts;
    u32 frameSize;
    COutputFile output;
    COutputAsFile library;
    TSharedPtr<IFile> file;
    u64 framesAt = 0;
    u64 count = 0;
    TArray<u32> sums;
    bool broken = false;  ///< a write failed: what stands in the file is no recording
};

CRecordingWriter::CRecordingWriter(const std::filesystem::path& path, reduce::CReduceObjectArray& objects,
                                   const SFrameFormat& format, u32 frameSize, const SWriteOptions& options)
    : body_(std::make_unique<SBody>(path, objects, format, frameSize, options)) {}

CRecordingWriter::CRecordingWriter(CRecordingWriter&&) noexcept = default;
CRecordingWriter::~CRecordingWriter() = default;

SReadyFrame CRecordingWriter::Prepare(std::span<const u8> frame) const { return body_->Prepare(frame); }

void CRecordingWriter::Add(const SReadyFrame& frame) {
    SBody& body = *body_;
    body.broken = true;
    body.output.WriteAt(body.framesAt + body.count * body.frameSize, frame.bytes);
    body.broken = false;
    body.counts.Add(frame.preset);
    ++body.count;
    if (body.options.checksums) body.sums.Add(frame.sum);
}

void CRecordingWriter::Flush() {
    body_->Require(!body_->broken, "what follows a frame that could not be written");
    body_->output.Sync();
}

void CRecordingWriter::Finish() {
    SBody& body = *body_;
    body.Require(!body.broken, "what follows a frame that could not be written");
    body.broken = true;
    body.Require(body.file->Flush(), "the frames");
    body.Require(reduce::FinishKRTFile(body.file, body.counts.Data(), body.options.unpacked), "the frame counts");
    body.PatchCounts();
    body.Require(body.file->Flush(), "the frame counts");
    body.RequireFinished();
    const u32 metadataCrc = body.options.checksums ? body.MetadataCrc() : 0;
    body.output.Commit();
    SFrameSums sums{body.frameSize, metadataCrc, std::move(body.sums)};
    PutSums(body.output.Target(), body.options.checksums ? &sums : nullptr);
}

u64 CRecordingWriter::Count() const { return body_->count; }
u64 CRecordingWriter::Bytes() const { return body_->output.Size(); }
const std::filesystem::path& CRecordingWriter::Part() const { return body_->output.Part(); }

void GatherMetadata(const CSource& source, std::span<const SRawFrame> firstFrames,
                    reduce::CReduceObjectArray& objects) {
    source.Describe(objects);
    const auto info = objects.GetSourceInfo(true);
    const CFrameProbe probe(source.Format());
    for (std::size_t i = firstFrames.size(); i-- > 0;) {
        std::vector<u8> frame = firstFrames[i].bytes;
        if (!probe.Passes(frame)) continue;  // the recording itself says what is wrong with it
        if (const auto time = probe.Carried(frame).time) info->time = *time;
        probe.ParseMetadata(frame, objects);
    }
    source.Overrule(objects);
    // A recording marks its scene as the source's own, which one that nobody gave is not.
    const auto scene = objects.GetObjectParameters(false);
    if (scene && !scene->fromSource) objects.RemoveAllObjectsOfType(scene->GetTypeID());
    if (info->cameraName.Equals(L"Unknown Camera")) {
        const auto filter = reduce::filterFactory()->Create(CString(source.Format().filter.c_str()));
        if (filter) info->cameraName = filter->GetName();
    }
    for (auto& preset : info->presets) preset.frameCount = 0;
}

void GatherMetadata(const CSource& source, const CFrameNumbers& frames, reduce::CReduceObjectArray& objects) {
    constexpr u64 kMostRead = 16;
    std::vector<SRawFrame> first(std::min(kMostRead, frames.Count()));
    for (u64 n = 0; n < first.size(); ++n) {
        try {
            source.Read(frames[n], first[n]);
        } catch (const CError&) {
            first[n].bytes.clear();  // the recording itself says what is wrong with it
        }
    }
    GatherMetadata(source, first, objects);
}

}  // namespace ovix::measure
