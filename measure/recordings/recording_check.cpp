#include "measure/recordings/metadata_check.h"
#include "measure/recordings/recording.h"
#include "measure/recordings/stored_frames.h"
#include "measure/sources/input_file.h"
#include "measure/text.h"

namespace ovix::measure {

using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

class CFramesCheck {
  public:
    CFramesCheck(const CRecordingFile& file, const Report& report) : file_(file), report_(report) {}

    void Run(const std::filesystem::path& path) {
        const auto source = LoadSourceInfo(file_);
        CStoredFrames frames(file_, source && source->fixedPreset, report_);
        if (auto sums = FindSums(path, frames.Count())) frames.SetSums(std::move(*sums));
        bool all = true;
        for (u64 i = 0; i < frames.Count(); ++i) all = Check(frames, i) && all;
        frames.ReportCut(report_);
        if (!frames.Count())
            report_({.id = EFinding::NoFrames,
                     .weight = EWeight::Damage,
                     .offset = file_.FramesAt(),
                     .expected = "frames",
                     .found = "none"});
        if (all && frames.HasDecoder()) CheckCounts(frames.Counts().Data());
    }

  private:
    std::optional<SFrameSums> FindSums(const std::filesystem::path& path, u64 count) {
        const std::filesystem::path beside = SumsPath(path);
        if (!IdentityOf(beside)) return {};
        auto sums = LoadSums(beside);
        if (sums && sums->BelongTo(file_) && sums->sums.size() == count) return sums;
        report_({.id = EFinding::SumsMissing,
                 .weight = EWeight::Damage,
                 .what = beside.filename().string(),
                 .expected = Say("the sums of the ", count, " frames of this recording"),
                 .found = sums ? Say(sums->sums.size(), " of another") : "a damaged file"});
        return {};
    }
    bool Check(CStoredFrames& frames, u64 number) {
        try {
            frames.Read(number);
            return true;
        } catch (const CError& error) {
            const SErrorFacts& facts = error.Facts();
            if (facts.systemError || facts.id == EError::FileChanged) throw;
            report_({.id = facts.id == EError::SumDiffers ? EFinding::SumDiffers : EFinding::FrameDamaged,
                     .weight = EWeight::Damage,
                     .frame = number,
                     .offset = frames.OffsetOf(number) + facts.offset.value_or(0),
                     .what = facts.problem,
                     .expected = facts.expected,
                     .found = facts.found});
            return false;
        }
    }
    void CheckCounts(const u32* counts) {
        for (const reduce::SInfoFileBlock& block : file_.Blocks()) {
            if (block.typeID != SourceInfo::typeID) continue;
            const auto file = file_.Open();
            SourceInfo source;
            file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
            if (!source.Load(file, block.version, 0)) continue;
            for (u32 p = 0; p < CFrameCounts::kPresets; ++p) CheckCount(block, source, p, counts[p]);
        }
    }
    void CheckCount(const reduce::SInfoFileBlock& block, const SourceInfo& source, u32 preset, u32 count) {
        const u32 stored = source.presets[preset].frameCount;
        SFinding finding{.id = EFinding::CountsDiffer, .weight = EWeight::Damage, .block = BlockText(block)};
        finding.offset =
            block.dataOffset + (block.size == SourceInfo::RecordSize ? SourceInfo::FrameCountOffset(preset) : 0);
        if (stored != count) {
            finding.what =
                Say("frames of preset ", preset, stored ? "" : " (none in a recording that was never finished)");
            finding.expected = Say(count);
            finding.found = Say(stored);
        } else if (!source.fixedPreset && source.presets[preset].enabled != (stored != 0)) {
            finding.what = Say("use of preset ", preset);
            finding.expected = stored ? "enabled" : "not enabled";
            finding.found = stored ? "not enabled" : "enabled";
        } else {
            return;
        }
        report_(std::move(finding));
    }

    const CRecordingFile& file_;
    const Report& report_;
};

}  // namespace

bool CheckRecording(const std::filesystem::path& path, const std::function<void(const SFinding&)>& report) {
    const CRecordingFile file = OpenRecording(path);
    bool good = true;
    const Report look = [&](const SFinding& finding) {
        good = good && finding.weight != EWeight::Damage;
        report(finding);
    };
    CheckMetadata(file, look);
    if (file.HasPixels()) CFramesCheck(file, look).Run(path);
    return good;
}

void MakeChecksums(const std::filesystem::path& recording, bool overwrite) {
    const CRecordingFile file = OpenRecording(recording);
    bool good = true;
    const Report look = [&](const SFinding& finding) { good = good && finding.weight != EWeight::Damage; };
    CheckMetadata(file, look);
    if (!good || !file.HasPixels())
        throw CError(
            {.id = EError::MetadataDamaged, .file = file.Name(), .problem = "sums are made of a sound recording only"});
    CStoredFrames frames(file, true, look);
    SFrameSums sums{
        .frameSize = file.Pixels().frameSize, .metadataCrc = file.Bytes().CrcOf(0, file.FramesAt()), .sums = {}};
    for (u64 i = 0; i < frames.Count(); ++i) {
        try {
            sums.sums.Add(CrcOf(frames.Read(i).first(file.Pixels().frameSize)));
        } catch (const CError& error) {
            throw error.Of(file.Name(), i);
        }
    }
    SaveSums(SumsPath(recording), sums, overwrite);
}

}  // namespace ovix::measure
