#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {

namespace {

/// The chosen frames of a source, one after the other, whether they have numbers or not.
class CFrameWalk {
  public:
    CFrameWalk(const measure::CSource& source, std::optional<measure::CFrameNumbers> frames)
        : source_(source), frames_(std::move(frames)) {
        if (source.IsNumbered() && !frames_) frames_ = measure::CFrameNumbers::All(*source.Count());
    }
    /// False at the end. Throws the error of a frame, behind which it goes on.
    bool Next(measure::SRawFrame& raw) {
        if (!source_.IsNumbered()) return NextInOrder(raw);
        if (at_ == frames_->Count()) return false;
        source_.Read((*frames_)[at_++], raw);
        return true;
    }
    u64 Total() const { return source_.IsNumbered() ? frames_->Count() : 0; }

  private:
    bool NextInOrder(measure::SRawFrame& raw) {
        while (!frames_ || at_ < frames_->Count()) {
            if (!source_.Next(raw)) return false;
            if (!frames_) return true;
            if (raw.number == (*frames_)[at_]) return ++at_, true;
        }
        return false;
    }

    const measure::CSource& source_;
    std::optional<measure::CFrameNumbers> frames_;
    u64 at_ = 0;
};

class CRecordCommand final : public ICommand {
  public:
    const char* Verb() const override { return "record"; }
    const char* Brief() const override { return "raw frames to a recording"; }
    const char* Examples() const override {
        return "ovix record dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 -o run.krt\n"
               "ovix record dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --emissivity 0.95 --correction nuc "
               "-o run.krt\n"
               "ovix record run.krt --frames 10-19 -o part-of-run.krt";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        told_.Add(verb);
        const char* group = "Output";
        verb.add_option("-o,--output", output_, "the recording")->required()->type_name("FILE")->group(group);
        verb.add_flag("--unpacked", how_.unpacked, "say that frames are stored as the camera delivers them")
            ->group(group);
        verb.add_flag("--checksums", how_.checksums,
                      "write a CRC of each frame to FILE.crc, against which every verb holds the frames that it reads")
            ->group(group);
        verb.add_flag("--keep-part", how_.keepPart,
                      "leave what was written as FILE.part where the recording does not come to its end, for \"ovix "
                      "repair\"")
            ->group(group);
        verb.add_flag("--overwrite", how_.overwrite, "replace a file that exists")->group(group);
        verb.add_flag("--json", json_, "say what was done as JSON")->group(group);
    }

    EExit Run() override {
        measure::SMeasureOptions told;
        told.scene = told_.Scene();
        told.corrections = told_.Corrections();
        told.userCalibration = told_.UserCalibration();
        const measure::CSource source = source_.Open();
        how_.input = source;
        const u32 frameSize = FrameSize(source);

        CFrameWalk walk(source, source_.Frames(source));
        measure::SRawFrame raw;
        reduce::CReduceObjectArray objects;
        const bool pending = Gather(source, walk, raw, objects);
        measure::AddToSource(objects, told, source.Format());

        measure::CRecordingWriter writer(output_, objects, source.Format(), frameSize, how_);
        std::optional<CRemovedOnInterrupt> removed;
        if (!how_.keepPart) removed.emplace(writer.Part());
        WriteAll(source, walk, raw, pending, writer);
        if (!done_) throw CAppError(ExitBadData, fmt::format("not one of {} frames would do", skipped_));
        writer.Finish();
        Report(source, frameSize, writer.Bytes());
        return CSourceArguments::Exit(source, skipped_);
    }

  private:
    /// What the recording says before its first frame; of a pipe the first frame is taken for it, and true the answer.
    bool Gather(const measure::CSource& source, CFrameWalk& walk, measure::SRawFrame& raw,
                reduce::CReduceObjectArray& objects) {
        if (source.IsNumbered()) {
            const auto frames = source_.Frames(source);
            measure::GatherMetadata(source, frames ? *frames : measure::CFrameNumbers::All(*source.Count()), objects);
            return false;
        }
        if (!Try([&] { return walk.Next(raw); })) return false;
        measure::GatherMetadata(source, std::span(&raw, 1), objects);
        return true;
    }

    /// What the step answers; a frame that would not do is skipped where that is wanted.
    template <class Step>
    bool Try(const Step& step) {
        for (;;) {
            try {
                return step();
            } catch (const measure::CError& error) {
                const bool ofFrame = error.Facts().frame && FaultOf(error).Exit() == ExitBadData;
                if (!ofFrame || source_.OnError() == measure::EOnFault::Stop) throw;
                ++skipped_;
                Say(std::string(FaultOf(error).what()) + " (skipped)");
            }
        }
    }

    void WriteAll(const measure::CSource& source, CFrameWalk& walk, measure::SRawFrame& raw, bool pending,
                  measure::CRecordingWriter& writer) {
        CProgress progress("frame", walk.Total());
        std::size_t said = source.Findings().size();
        for (bool more = true; more;) {
            progress.Show(done_);
            more = Try([&] {
                if (!std::exchange(pending, false) && !walk.Next(raw)) return false;
                try {
                    writer.Add(raw.bytes);
                } catch (const measure::CError& error) {
                    if (FaultOf(error).Exit() != ExitBadData) throw;  // no frame's fault
                    throw error.Of(source.Name(), raw.number);
                }
                ++done_;
                return true;
            });
            source_.SayNew(source, said);
        }
    }

    /// Of frames that differ the largest is looked for, ahead of all else.
    u32 FrameSize(const measure::CSource& source) const {
        if (source.FrameSize()) return static_cast<u32>(source.FrameSize());
        if (!source.IsNumbered())
            throw UsageFault("frames of " + source.Name() +
                             " differ in length, and a recording has one for all; --spool looks through them first");
        CFrameWalk walk(source, source_.Frames(source));
        CProgress progress("looking ahead: frame", walk.Total());
        std::size_t largest = 0;
        measure::SRawFrame raw;
        for (u64 n = 0; n < walk.Total(); ++n) {
            progress.Show(n);
            try {
                walk.Next(raw);
                largest = std::max(largest, raw.bytes.size());
            } catch (const measure::CError&) {
                if (source_.OnError() == measure::EOnFault::Stop) throw;
            }
        }
        return static_cast<u32>(largest);
    }

    void Report(const measure::CSource& source, u32 frameSize, u64 bytes) const {
        if (!json_) {
            Say(fmt::format("{}: {} {} of {} bytes", output_, done_, done_ == 1 ? "frame" : "frames", frameSize));
            return;
        }
        PrintJson({{"schema", kSchemaVersion},
                   {"output", output_},
                   {"frames", done_},
                   {"skipped", skipped_},
                   {"frameBytes", frameSize},
                   {"bytes", bytes},
                   {"complete", CSourceArguments::Exit(source, skipped_) == ExitDone},
                   {"findings", FindingsJson(source.Findings())}});
    }

    CSourceArguments source_;
    CSceneArguments told_;
    std::string output_;
    measure::SWriteOptions how_;
    u64 done_ = 0;
    u64 skipped_ = 0;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeRecordCommand() { return std::make_unique<CRecordCommand>(); }

}  // namespace ovix::app
