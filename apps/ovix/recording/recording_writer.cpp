#include "apps/ovix/recording/recording_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/pipeline/frame_time.h"

namespace ovix::app {

namespace {

using reduce::SInfoFileBlock;

void Require(bool done, const char* doing) {
    if (!done) throw CFault({.exit = ExitFile, .problem = fmt::format("cannot write {}", doing)});
}

/// Calls `use(block, record)` for the stored source info.
template <class Use>
void WithStoredInfo(const TSharedPtr<IFile>& file, Use&& use) {
    reduce::InfoFileDirectory blocks;
    file->SeekToBegin();
    Require(reduce::ScanInfoFile(file, blocks, 0), "the metadata so that they can be read again");
    for (SInfoFileBlock& block : blocks) {
        if (block.typeID != reduce::CSourceInfoReduceObject::typeID) continue;
        std::vector<u8> record(reduce::CSourceInfoReduceObject::RecordSize);
        file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
        Require(block.size == record.size() && file->ReadBytes(record.data(), static_cast<u32>(record.size())),
                "the source info so that it can be read again");
        use(block, record);
    }
}

}  // namespace

CRecordingWriter::CRecordingWriter(TSharedPtr<IFile> file, reduce::CReduceObjectArray& objects,
                                   const SFrameFormat& format, u32 frameSize, bool unpacked)
    : file_(std::move(file)),
      format_(format),
      decode_(format),
      unpacked_(unpacked),
      counts_(objects.GetSourceInfo(false)->fixedPreset),
      stored_(frameSize) {
    reduce::SPixelsHeader header;
    reduce::InitPixelsHeader(header, objects.GetSourceInfo(false), unpacked);
    header.frameSize = header.frameSize2 = frameSize;
    Require(reduce::StartKRTFile(file_, objects, header), "the metadata");
}

void CRecordingWriter::Add(std::span<const u8> frame) {
    if (frame.size() > stored_.size())
        throw CFault({.expected = fmt::format("at most {} bytes, as all frames of the recording", stored_.size()),
                      .found = fmt::format("{}", frame.size())});
    std::fill(stored_.begin() + static_cast<std::ptrdiff_t>(frame.size()), stored_.end(), u8{0});
    if (!decode_.Filter().StoreFrame(frame.data(), static_cast<u32>(frame.size()), format_.pixelType, format_.width,
                                     format_.height, 1, 0, stored_.data(), static_cast<u32>(stored_.size())))
        throw CFault({.problem = "the decoder does not store the frame"});
    decode_.Check(stored_);
    counts_.Add(decode_.Filter(), format_, stored_);
    Require(file_->WriteBytes(stored_.data(), static_cast<u32>(stored_.size())), "a frame");
}

void CRecordingWriter::Finish() {
    Require(file_->Flush(), "the frames");
    Require(reduce::FinishKRTFile(file_, counts_.Data(), unpacked_), "the frame counts");
    PatchCounts();
    Require(file_->Flush(), "the frame counts");
    RequireFinished();
}

/// The library's part ends with the fourth preset.
void CRecordingWriter::PatchCounts() {
    if (std::all_of(counts_.Data() + 4, counts_.Data() + CFrameCounts::kPresets, [](u32 n) { return n == 0; })) return;
    WithStoredInfo(file_, [&](SInfoFileBlock& block, std::vector<u8>& record) {
        const u32 size = static_cast<u32>(record.size());
        SourceInfo::UpdateNumFrames(record.data(), size, counts_.Data(), CFrameCounts::kPresets);
        block.crc = CrcOf(record);
        file_->Seek(static_cast<i64>(block.headerOffset), IFile::FromStart);
        Require(reduce::WriteInfoFileBlock(file_, block) && file_->WriteBytes(record.data(), size), "the frame counts");
    });
}

/// The library does not say whether the last writes arrived.
void CRecordingWriter::RequireFinished() {
    WithStoredInfo(file_, [&](const SInfoFileBlock& block, std::vector<u8>& record) {
        const std::vector<u8> found = record;
        SourceInfo::UpdateNumFrames(record.data(), static_cast<u32>(record.size()), counts_.Data(),
                                    CFrameCounts::kPresets);
        Require(block.crc == CrcOf(found) && found == record, "the frame counts");
    });
}

void GatherMetadata(IFrameSource& source, const CFrameNumbers& frames, reduce::CReduceObjectArray& objects) {
    constexpr u64 kMostRead = 16;
    source.Describe(objects);
    const auto info = objects.GetSourceInfo(true);
    CGuardedDecode decode(source.Format());
    std::vector<u8> frame;
    for (u64 n = std::min(kMostRead, frames.Count()); n-- > 0;) {
        try {
            source.Read(frames[n], frame);
            const CFrameClock clock;
            const u8 preset = decode.DecodeMetadata(frame, objects);
            const auto values = objects.GetFrameInfo(preset, false);
            if (values) info->time = clock.Carried(values->time).value_or(info->time);
        } catch (const CFault&) {
            continue;  // the recording itself says what is wrong with it
        }
    }
    source.Overrule(objects);
    // A recording marks its scene as the source's own, which one that nobody told is not.
    const auto scene = objects.GetObjectParameters(false);
    if (scene && !scene->fromSource) objects.RemoveAllObjectsOfType(scene->GetTypeID());
    if (info->cameraName.Equals(L"Unknown Camera")) info->cameraName = decode.Filter().GetName();
    for (auto& preset : info->presets) preset.frameCount = 0;
}

void SetPacket(reduce::CSourceInfoReduceObject& info, u32 frameSize) {
    const u32 line = u32{PixelWidth(info.pixelType)} * info.frameWidth;
    if (!line || frameSize % line || frameSize / line > 0xFFFF) return;
    info.packetWidth = info.frameWidth;
    info.packetHeight = static_cast<u16>(frameSize / line);
}

}  // namespace ovix::app
