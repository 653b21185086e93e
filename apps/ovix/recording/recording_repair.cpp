#include "apps/ovix/recording/recording_repair.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "apps/ovix/input/frame_format.h"
#include "apps/ovix/recording/library_file.h"
#include "apps/ovix/recording/recording_check.h"
#include "apps/ovix/recording/stored_frames.h"

namespace ovix::app {

using reduce::SInfoFileBlock;
using reduce::SPixelsHeader;
using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

/// A source info as far as the pixels record knows the source.
TSharedPtr<SourceInfo> InfoFromPixels(const SPixelsHeader& pixels) {
    auto info = MakeShared<SourceInfo>();
    info->pixelType = pixels.pixelType;
    info->width = pixels.width;
    info->height = pixels.height;
    info->frameWidth = pixels.frameWidth;
    info->frameHeight = pixels.frameHeight;
    info->packetWidth = pixels.packetWidth;
    info->packetHeight = pixels.packetHeight;
    info->packetExtra = pixels.packetExtra;
    if (IsPixelBaseType(pixels.pixelType, rootScreenType)) info->baseUnit = RGB24;
    return info;
}

class CRepair {
  public:
    CRepair(CRecordingFile& file, COutputFile& output, const std::function<void(std::string)>& say)
        : file_(file), output_(output), library_(output), out_(BorrowShared<IFile>(library_)), say_(say) {}

    SRepaired Run() {
        RequirePixels();
        MendPixels();
        Count();
        Require(reduce::CreateInfoFile(out_));
        bool hasInfo = false;
        for (const SInfoFileBlock& block : file_.Blocks()) {
            if (block.headerOffset == file_.PixelsBlock().headerOffset) continue;
            hasInfo = CopyBlock(block) || hasInfo;
        }
        if (!hasInfo) WriteNewInfo();
        Require(reduce::WritePixelsHeader(out_, NewPixels()));
        CopyFrames();
        return result_;
    }

  private:
    void RequirePixels() {
        if (!file_.HasPixels() && file_.FindPixelsBehindBreak()) {
            ++result_.leftOut;
            say_(fmt::format("offset {}: the blocks between here and the pixels at {} cannot be followed; left out",
                             file_.Break() ? file_.Break()->offset.value_or(0) : 0, file_.PixelsBlock().headerOffset));
        }
        if (!file_.HasPixels())
            throw CFault({.file = file_.Name(),
                          .expected = "the block of the pixels",
                          .found = "none: the recording ended before its first frame"});
        if (!file_.WholeFrames())
            throw CFault({.file = file_.Name(),
                          .offset = file_.FramesAt(),
                          .expected = fmt::format("at least one frame of {} bytes", file_.FrameStep()),
                          .found = fmt::format("{} bytes", file_.CutBytes())});
    }

    /// Where the record of the pixels differs from a source info whose CRC is right, the record is damaged. Its frame
    /// sizes follow from nothing else.
    void MendPixels() {
        const auto& blocks = file_.Blocks();
        const bool isWhole = std::any_of(blocks.begin(), blocks.end(), [&](const SInfoFileBlock& block) {
            return block.typeID == SourceInfo::typeID && EndsInside(block) && IsWholeBlock(file_, block);
        });
        const TSharedPtr<SourceInfo> source = isWhole ? LoadSourceInfo(file_) : TSharedPtr<SourceInfo>();
        const SPixelsHeader& found = file_.Pixels();
        SPixelsHeader pixels = ExpectedPixels(file_, source.ptr());
        pixels.frameSize2 = found.frameSize2;
        const u32 version = file_.PixelsBlock().version;
        u8 wanted[sizeof pixels];
        u8 there[sizeof pixels];
        reduce::StorePixelsHeader(pixels, version, wanted);
        reduce::StorePixelsHeader(found, version, there);
        for (const SStoredPart& part : DifferingParts(reduce::PixelsHeaderLayout(version), wanted, there)) {
            say_(fmt::format("offset {}: {} in the pixels record was {}; made {}",
                             file_.PixelsBlock().dataOffset + part.offset, part.name, part.Text(there),
                             part.Text(wanted)));
        }
        file_.SetPixels(pixels);
    }

    SPixelsHeader NewPixels() const {
        SPixelsHeader pixels = file_.Pixels();
        pixels.size = pixels.sizeAgain = sizeof pixels;
        pixels.version = SPixelsHeader::Version;
        const bool alone = std::all_of(std::begin(pixels.frameBlocks), std::end(pixels.frameBlocks),
                                       [](const reduce::SFrameBlockEntry& entry) { return entry.id == CGUID::Empty; });
        if (alone) pixels.frameSize = pixels.frameSize2 = static_cast<u32>(file_.FrameStep());
        return pixels;
    }

    /// The frames that will be in the new file, ahead of writing: its source info comes first.
    void Count() {
        bool fixedPreset = false;
        for (const SInfoFileBlock& block : file_.Blocks()) {
            const std::vector<u8> record = file_.DataOf(block, SourceInfo::RecordSize);
            if (block.typeID == SourceInfo::typeID && record.size() > SourceInfo::FixedPresetOffset)
                fixedPreset = record[SourceInfo::FixedPresetOffset] != 0;
        }
        CStoredFrames frames(file_, fixedPreset);
        ForEachGood(
            frames, [&](std::span<const u8>) { ++result_.frames; }, true);
        if (!result_.frames)
            throw CFault(
                {.file = file_.Name(), .problem = fmt::format("not one of {} frames would do", file_.WholeFrames())});
        counts_.assign(frames.Counts().Data(), frames.Counts().Data() + CFrameCounts::kPresets);
        if (const u64 cut = file_.CutBytes())
            say_(fmt::format("frame {} is cut after {} of {} bytes; left out", file_.WholeFrames(), cut,
                             file_.FrameStep()));
    }

    template <class Use>
    void ForEachGood(CStoredFrames& frames, Use&& use, bool saysOthers) {
        for (u64 i = 0; i < frames.Count(); ++i) {
            try {
                use(frames.Read(i));
            } catch (const CFault& fault) {
                if (fault.Exit() == ExitFile) throw;  // the system cannot read or write
                if (!saysOthers) continue;
                ++result_.leftOut;
                say_(std::string(fault.Of("", i).what()) + "; left out");
            }
        }
    }

    void CopyFrames() {
        CStoredFrames frames(file_, false);
        ForEachGood(
            frames,
            [&](std::span<const u8> frame) { Require(out_->WriteBytes(frame.data(), static_cast<u32>(frame.size()))); },
            false);
    }

    /// True for a source info.
    bool CopyBlock(const SInfoFileBlock& found) {
        const SInfoFileBlock block = EndsInside(found) ? Mended(found) : found;
        if (block.typeID == SourceInfo::typeID && EndsInside(block)) return CopyInfo(block);
        if (EndsInside(block) && IsFree(block)) {
            Require(reduce::WriteFreeInfoFileBlock(out_, block.size));
            return false;
        }
        if (!EndsInside(block) || !IsWholeBlock(file_, block)) {
            ++result_.leftOut;
            say_(fmt::format("offset {}: block {} is damaged; left out", block.headerOffset, BlockText(block)));
            return false;
        }
        Require(reduce::WriteInfoFileBlock(out_, block));
        CopyBytes(block.dataOffset, block.size);
        return false;
    }

    bool EndsInside(const SInfoFileBlock& block) const { return block.size <= file_.Input().Size() - block.dataOffset; }
    static bool IsFree(const SInfoFileBlock& block) { return block.typeID == CGUID::Empty && !block.name[0]; }

    /// With the header that belongs to its data, if those are right. Size and CRC, which tell that, stay.
    SInfoFileBlock Mended(const SInfoFileBlock& block) {
        if (IsFree(block) || file_.CrcOf(block) != block.crc) return block;
        SInfoFileBlock mended = ExpectedHeader(file_, block);
        mended.size = block.size;
        u8 wanted[SInfoFileBlock::HeaderBytes];
        u8 found[SInfoFileBlock::HeaderBytes];
        reduce::WriteInfoFileBlock(wanted, mended);
        reduce::WriteInfoFileBlock(found, block);
        for (const SStoredPart& part : DifferingParts(reduce::InfoFileBlockLayout(), wanted, found)) {
            say_(fmt::format("offset {}: {} of block {} was {}; made {}", block.headerOffset + part.offset, part.name,
                             BlockText(mended), part.Text(found), part.Text(wanted)));
        }
        return mended;
    }

    /// A recording may have ended in the middle of its own patch: then the header's CRC is that of the record with the
    /// frame counts in it.
    bool CopyInfo(SInfoFileBlock block) {
        std::vector<u8> record = file_.DataOf(block, SourceInfo::RecordSize);
        const bool wasWhole = IsWholeBlock(file_, block);
        const u32 size = static_cast<u32>(record.size());
        if (block.size != SourceInfo::RecordSize) {
            if (!wasWhole) return SayInfoDamaged(block);
            Require(reduce::WriteInfoFileBlock(out_, block));  // an older form: its counts cannot be patched
            CopyBytes(block.dataOffset, block.size);
            return true;
        }
        const SPixelsHeader& pixels = file_.Pixels();
        SourceInfo::UpdateNumFrames(record.data(), size, counts_.data(), CFrameCounts::kPresets);
        if (IsUnpacked(pixels))
            SourceInfo::UpdatePacketing(record.data(), size, pixels.frameWidth, pixels.frameHeight, 0);
        if (!wasWhole && CrcOf(record) != block.crc) return SayInfoDamaged(block);
        block.crc = CrcOf(record);
        Require(reduce::WriteInfoFileBlock(out_, block) && out_->WriteBytes(record.data(), size));
        return true;
    }

    bool SayInfoDamaged(const SInfoFileBlock& block) {
        say_(
            fmt::format("offset {}: the source info is damaged; made anew from the pixels record, without the "
                        "camera's name, texts and time",
                        block.headerOffset));
        ++result_.leftOut;
        return false;
    }

    void WriteNewInfo() {
        const auto info = InfoFromPixels(file_.Pixels());
        for (u32 p = 0; p < CFrameCounts::kPresets; ++p) {
            info->presets[p].frameCount = counts_[p];
            info->presets[p].enabled = counts_[p] != 0;
        }
        Require(reduce::WriteInfoFileBlock(out_, info));
    }

    void CopyBytes(u64 offset, u64 size) {
        std::vector<u8> bytes(std::size_t{256} << 10);
        while (size) {
            const std::size_t read = file_.Input().ReadAt(offset, {bytes.data(), std::min<u64>(size, bytes.size())});
            Require(read != 0 && out_->WriteBytes(bytes.data(), static_cast<u32>(read)));
            offset += read;
            size -= read;
        }
    }

    void Require(bool done) const {
        if (!done) throw CFault({.exit = ExitFile, .file = output_.Target().string(), .problem = "cannot write"});
    }

    CRecordingFile& file_;
    COutputFile& output_;
    CLibraryOutput library_;
    TSharedPtr<IFile> out_;
    const std::function<void(std::string)>& say_;
    std::vector<u32> counts_;
    SRepaired result_;
};

}  // namespace

SRepaired RepairRecording(CRecordingFile& file, COutputFile& output, const std::function<void(std::string)>& say) {
    return CRepair(file, output, say).Run();
}

}  // namespace ovix::app
