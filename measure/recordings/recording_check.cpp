#include <variant>

#include "measure/in_order.h"
#include "measure/recordings/metadata_check.h"
#include "measure/recordings/recording.h"
#include "measure/recordings/stored_frames.h"
#include "measure/text.h"

namespace ovix::measure {

using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

class CFramesCheck {
  public:
    CFramesCheck(const CRecordingFile& file, const Report& report) : file_(file), report_(report) {}

    void Run(unsigned threads) {
        const auto source = LoadSourceInfo(file_);
        CStoredFrames frames(file_, source && source->fixedPreset, report_);
        if (auto sums = SumsBeside(file_, frames.Count(), report_)) frames.SetSums(std::move(*sums));
        bool all = true;
        InOrder(
            ThreadsOf(threads), Numbers(frames.Count()), [&](u64 number) { return Check(frames, number); },
            [&](const std::variant<CStoredFrames::SRead, SFinding>& checked) {
                if (const auto* finding = std::get_if<SFinding>(&checked)) report_(*finding);
                if (const auto* frame = std::get_if<CStoredFrames::SRead>(&checked)) frames.Tally(*frame);
                all = all && checked.index() == 0;
            });
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
    /// The frame without its bytes, or what is wrong with it.
    static std::variant<CStoredFrames::SRead, SFinding> Check(const CStoredFrames& frames, u64 number) {
        try {
            return CStoredFrames::SRead{.bytes = {}, .preset = frames.Read(number).preset};
        } catch (const CError& error) {
            const SErrorFacts& facts = error.Facts();
            if (facts.systemError || facts.id == EError::FileChanged) throw;
            return SFinding{.id = facts.id == EError::SumDiffers ? EFinding::SumDiffers : EFinding::FrameDamaged,
                            .weight = EWeight::Damage,
                            .frame = number,
                            .offset = frames.OffsetOf(number) + facts.offset.value_or(0),
                            .what = facts.problem,
                            .expected = facts.expected,
                            .found = facts.found};
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

bool CheckRecording(const std::filesystem::path& path, const std::function<void(const SFinding&)>& report,
                    unsigned threads) {
    const CRecordingFile file = OpenRecording(path);
    bool good = true;
    const Report look = [&](const SFinding& finding) {
        good = good && finding.weight != EWeight::Damage;
        report(finding);
    };
    CheckMetadata(file, look);
    if (file.HasPixels()) CFramesCheck(file, look).Run(threads);
    return good;
}

void MakeChecksums(const std::filesystem::path& recording, bool overwrite, unsigned threads) {
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
    const auto sumOf = [&](u64 number) {
        try {
            const CStoredFrames::SRead frame = frames.Read(number);
            return CrcOf(std::span(frame.bytes).first(sums.frameSize));
        } catch (const CError& error) {
            throw error.Of(file.Name(), number);
        }
    };
    InOrder(ThreadsOf(threads), Numbers(frames.Count()), sumOf, [&](u32 sum) { sums.sums.Add(sum); });
    SaveSums(SumsPath(recording), sums, overwrite);
}

}  // namespace ovix::measure
