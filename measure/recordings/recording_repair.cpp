#include <algorithm>
#include <variant>

#include "measure/recordings/metadata_check.h"
#include "measure/recordings/output_file.h"
#include "measure/recordings/recording.h"
#include "measure/recordings/stored_frames.h"
#include "measure/sources/input_file.h"
#include "measure/text.h"

namespace ovix::measure {

using reduce::SInfoFileBlock;
using reduce::SPixelsHeader;
using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

/// A source info as far as the pixels record knows the source.
TSharedPtr<SourceInfo> InfoFromPixels(const SPixelsHeader& pixels) {
    auto info = MakeShared<SourceInfo>();
    info->time.SetTimestamp(0);
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
    CRepair(CRecordingFile& file, COutputFile& output, const Report& say)
        : file_(file), output_(output), library_(output), out_(BorrowShared<IFile>(library_)), say_(say) {}

    SRepaired Run() {
        RequirePixels();
        MendPixels();
        CStoredFrames frames(file_, HasFixedPreset(), [&](SFinding finding) {
            ++result_.leftOut;
            say_(std::move(finding));
        });
        ChooseFrames(frames);
        Require(reduce::CreateInfoFile(out_));
        bool hasInfo = false;
        for (const SInfoFileBlock& block : file_.Blocks()) {
            if (!file_.IsPixels(block)) hasInfo = CopyBlock(block) || hasInfo;
        }
        if (!hasInfo) WriteNewInfo();
        Require(reduce::WritePixelsHeader(out_, NewPixels()));
        framesAt_ = output_.Size();
        CopyFrames(frames);
        return result_;
    }

    /// Of the frames in the new file, to be asked when it is written.
    SFrameSums Sums() {
        std::vector<u8> metadata(framesAt_);
        Require(output_.ReadAt(0, metadata) == framesAt_);
        return {NewPixels().frameSize, CrcOf(metadata), std::move(sums_)};
    }

  private:
    void LeaveOut(EFinding id, u64 offset, std::string block, std::string what) {
        ++result_.leftOut;
        say_({.id = id,
              .weight = EWeight::Damage,
              .block = std::move(block),
              .offset = offset,
              .what = std::move(what)});
    }

    void RequirePixels() {
        if (!file_.HasPixels() && file_.FindPixelsBehindBreak()) {
            LeaveOut(EFinding::ChainBroken, file_.Break() ? file_.Break()->offset.value_or(0) : 0, "",
                     Say("the blocks between here and the pixels at ", file_.PixelsBlock().headerOffset,
                         " cannot be followed; left out"));
        }
        if (!file_.HasPixels())
            throw CError({.id = EError::BlocksBroken,
                          .file = file_.Name(),
                          .expected = "the block of the pixels",
                          .found = "none: the recording ended before its first frame"});
        if (!file_.WholeFrames())
            throw CError({.id = EError::NoFrames,
                          .file = file_.Name(),
                          .offset = file_.FramesAt(),
                          .expected = Say("at least one frame of ", file_.FrameStep(), " bytes"),
                          .found = Say(file_.CutBytes(), " bytes")});
    }

    /// Where the record of the pixels differs from a source info whose CRC is right, the record is damaged. Its frame
    /// sizes follow from nothing else.
    void MendPixels() {
        const auto& blocks = file_.Blocks();
        const bool isWhole = std::any_of(blocks.begin(), blocks.end(), [&](const SInfoFileBlock& block) {
            return block.typeID == SourceInfo::typeID && file_.EndsInside(block) && IsWholeBlock(file_, block);
        });
        const TSharedPtr<SourceInfo> source = isWhole ? LoadSourceInfo(file_) : TSharedPtr<SourceInfo>();
        const u32 version = file_.PixelsBlock().version;
        SPixelsHeader pixels = ExpectedPixels(file_, source.ptr());
        pixels.frameSize2 = file_.Pixels().frameSize2;
        std::vector<u8> wanted(reduce::PixelsHeaderBytes(version)), found(wanted.size());
        reduce::StorePixelsHeader(pixels, version, wanted.data());
        reduce::StorePixelsHeader(file_.Pixels(), version, found.data());
        const SFinding place{.id = EFinding::HeaderDamaged,
                             .weight = EWeight::Damage,
                             .block = reduce::PixelsBlock.name,
                             .offset = file_.PixelsBlock().dataOffset};
        ReportDifferences(reduce::PixelsHeaderLayout(version), wanted.data(), found.data(), place,
                          " in the record, made what follows from the source info", say_);
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

    bool HasFixedPreset() const {
        bool fixedPreset = false;
        for (const SInfoFileBlock& block : file_.Blocks()) {
            const std::vector<u8> record = file_.DataOf(block, SourceInfo::RecordSize);
            if (block.typeID == SourceInfo::typeID && record.size() > SourceInfo::FixedPresetOffset)
                fixedPreset = record[SourceInfo::FixedPresetOffset] != 0;
        }
        return fixedPreset;
    }

    /// Ahead of writing, because the source info comes first and bears their counts.
    void ChooseFrames(CStoredFrames& frames) {
        for (u64 i = 0; i < frames.Count(); ++i) {
            const auto taken = Take(frames, i);
            if (const auto* error = std::get_if<CError>(&taken)) {
                const SErrorFacts& facts = error->Facts();
                ++result_.leftOut;
                say_({.id = EFinding::FrameDamaged,
                      .weight = EWeight::Damage,
                      .frame = i,
                      .offset = frames.OffsetOf(i) + facts.offset.value_or(0),
                      .what = facts.problem.empty() ? "left out" : facts.problem + "; left out",
                      .expected = facts.expected,
                      .found = facts.found});
            } else {
                frames.Tally(std::get<CStoredFrames::SRead>(taken));
                ++result_.frames;
            }
        }
        if (!result_.frames)
            throw CError({.id = EError::NoFrames,
                          .file = file_.Name(),
                          .problem = Say("not one of ", frames.Count(), " frames would do")});
        counts_.assign(frames.Counts().Data(), frames.Counts().Data() + CFrameCounts::kPresets);
        frames.ReportCut(say_);
    }

    /// The frame, or what keeps it out of the new file. Failures of the system are thrown.
    static std::variant<CStoredFrames::SRead, CError> Take(const CStoredFrames& frames, u64 number) {
        try {
            return frames.Read(number);
        } catch (const CError& error) {
            if (error.Facts().systemError || error.Id() == EError::FileChanged) throw;
            return error;
        }
    }

    void CopyFrames(CStoredFrames& frames) {
        u64 done = 0;
        const u32 size = NewPixels().frameSize;
        for (u64 i = 0; i < frames.Count(); ++i) {
            const auto taken = Take(frames, i);
            const auto* frame = std::get_if<CStoredFrames::SRead>(&taken);
            if (!frame) continue;
            output_.Write(frame->bytes);
            sums_.Add(CrcOf(std::span(frame->bytes).first(size)));
            ++done;
        }
        if (done != result_.frames)
            throw CError({.id = EError::FileChanged,
                          .file = file_.Name(),
                          .expected = Say(result_.frames, " good frames, as a moment ago"),
                          .found = Say(done)});
    }

    /// True for a source info.
    bool CopyBlock(const SInfoFileBlock& found) {
        const bool inside = file_.EndsInside(found);
        const SInfoFileBlock block = inside ? Mended(found) : found;
        if (inside && block.typeID == SourceInfo::typeID) return CopyInfo(block);
        if (inside && IsFree(block)) {
            Require(reduce::WriteFreeInfoFileBlock(out_, block.size));
        } else if (!inside || !IsWholeBlock(file_, block)) {
            LeaveOut(EFinding::BlockDamaged, block.headerOffset, BlockText(block), "the block is damaged; left out");
        } else {
            Require(reduce::WriteInfoFileBlock(out_, block));
            CopyBytes(block.dataOffset, block.size);
        }
        return false;
    }

    /// With the header that belongs to its data, if those are right. Size and CRC, which tell that, stay.
    SInfoFileBlock Mended(const SInfoFileBlock& block) {
        if (IsFree(block) || file_.CrcOf(block) != block.crc) return block;
        SInfoFileBlock mended = ExpectedHeader(file_, block);
        mended.size = block.size;
        u8 wanted[SInfoFileBlock::HeaderBytes];
        u8 found[SInfoFileBlock::HeaderBytes];
        reduce::WriteInfoFileBlock(wanted, mended);
        reduce::WriteInfoFileBlock(found, block);
        const SFinding place{.id = EFinding::HeaderDamaged,
                             .weight = EWeight::Damage,
                             .block = BlockText(mended),
                             .offset = block.headerOffset};
        ReportDifferences(reduce::InfoFileBlockLayout(), wanted, found, place,
                          " in the header, made what follows from the data", say_);
        return mended;
    }

    /// A recording may have ended in the middle of its own patch: then the header's CRC is that of the record with the
    /// frame counts in it.
    bool CopyInfo(SInfoFileBlock block) {
        std::vector<u8> record = file_.DataOf(block, SourceInfo::RecordSize);
        const bool wasWhole = IsWholeBlock(file_, block);
        const u32 size = static_cast<u32>(record.size());
        if (block.size != SourceInfo::RecordSize) {
            if (!wasWhole) return LeaveInfo(block);
            Require(reduce::WriteInfoFileBlock(out_, block));  // an older form: its counts cannot be patched
            CopyBytes(block.dataOffset, block.size);
            return true;
        }
        const SPixelsHeader& pixels = file_.Pixels();
        SourceInfo::UpdateNumFrames(record.data(), size, counts_.data(), CFrameCounts::kPresets);
        if (IsUnpacked(pixels))
            SourceInfo::UpdatePacketing(record.data(), size, pixels.frameWidth, pixels.frameHeight, 0);
        if (!wasWhole && CrcOf(record) != block.crc) return LeaveInfo(block);
        block.crc = CrcOf(record);
        Require(reduce::WriteInfoFileBlock(out_, block) && out_->WriteBytes(record.data(), size));
        return true;
    }

    bool LeaveInfo(const SInfoFileBlock& block) {
        LeaveOut(
            EFinding::BlockDamaged, block.headerOffset, BlockText(block),
            "the source info is damaged; made anew from the pixels record, without the camera's name, texts and time");
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
        std::vector<u8> bytes(std::min<u64>(size, u64{256} << 10));
        while (size) {
            const auto part = std::span(bytes).first(std::min<u64>(size, bytes.size()));
            file_.Bytes().ReadAllAt(offset, part);
            Require(out_->WriteBytes(part.data(), static_cast<u32>(part.size())));
            offset += part.size();
            size -= part.size();
        }
    }

    void Require(bool done) const {
        if (!done)
            throw CError({.id = EError::FileUnwritable, .file = output_.Target().string(), .problem = "cannot write"});
    }

    CRecordingFile& file_;
    COutputFile& output_;
    COutputAsFile library_;
    TSharedPtr<IFile> out_;
    const Report& say_;
    std::vector<u32> counts_;
    u64 framesAt_ = 0;
    TArray<u32> sums_;
    SRepaired result_;
};

}  // namespace

SRepaired RepairRecording(const std::filesystem::path& from, const std::filesystem::path& to,
                          const SWriteOptions& options, const std::function<void(const SFinding&)>& say) {
    CRecordingFile file = OpenRecording(from);
    if (IdentityOf(from) == IdentityOf(to))
        throw CError({.id = EError::FileIsInput, .file = to.string(), .problem = "is what is read"});
    COutputFile output(to, options.overwrite);
    const Report report = say;
    CRepair repair(file, output, report);
    const SRepaired repaired = repair.Run();
    SFrameSums sums = repair.Sums();
    output.Commit();
    PutSums(to, options.checksums ? &sums : nullptr);
    return repaired;
}

}  // namespace ovix::measure
