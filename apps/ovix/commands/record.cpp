#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/spool.h"
#include "apps/ovix/text/console.h"

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
    bool Next(measure::SRawFrame& raw, const std::stop_token& stop = {}) {
        if (!source_.IsNumbered()) return NextInOrder(raw, stop);
        if (at_ == frames_->Count()) return false;
        source_.Read((*frames_)[at_++], raw);
        return true;
    }
    u64 Total() const { return source_.IsNumbered() ? frames_->Count() : 0; }

  private:
    bool NextInOrder(measure::SRawFrame& raw, const std::stop_token& stop) {
        while (!frames_ || at_ < frames_->Count()) {
            if (!source_.Next(raw, stop)) return false;
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
        given_.Add(verb);
        const char* group = "Output";
        output_.Add(verb, "the recording");
        verb.add_flag("--unpacked", how_.unpacked, "say that frames are stored as the camera delivers them")
            ->group(group);
        verb.add_flag("--checksums", how_.checksums,
                      "write a CRC of each frame to FILE.crc, against which every verb holds the frames that it reads")
            ->group(group);
        verb.add_flag("--keep-part", how_.keepPart,
                      "leave what was written as FILE.part where the recording does not come to its end, for \"ovix "
                      "repair\" (frames of a pipe always: nobody has them again)")
            ->group(group);
    }

    EExit Run() override {
        how_.overwrite = output_.Overwrites();
        if (output_.File() == "-" && (how_.keepPart || how_.checksums))
            throw UsageFault("--keep-part, --checksums: have no effect on -o -");
        measure::SMeasureOptions given;
        given.scene = given_.Scene();
        given.corrections = given_.Corrections();
        given.userCalibration = given_.UserCalibration();
        const measure::CSource source = source_.Open();
        how_.input = source;
        how_.keepPart = how_.keepPart || (!source.IsNumbered() && output_.File() != "-");
        const u32 frameSize = FrameSize(source);

        CFrameWalk walk(source, source_.Frames(source));
        reduce::CReduceObjectArray objects;
        auto first = Gather(source, walk, objects);
        measure::AddToSource(objects, given, source.Format());

        CWayOut out(output_.File());
        measure::CRecordingWriter writer(out.Path(), objects, source.Format(), frameSize, how_);
        std::optional<CRemovedOnInterrupt> removed;
        if (!how_.keepPart) removed.emplace(writer.Part());
        WriteAll(source, walk, std::move(first), writer);
        if (!done_) throw CAppError(ExitBadData, fmt::format("not one of {} frames would do", skipped_));
        writer.Finish();
        out.Send();
        Report(source, frameSize, writer.Bytes());
        return CSourceArguments::Exit(source, skipped_);
    }

  private:
    /// A frame on its way, or why there is none.
    struct SStep {
        measure::SRawFrame raw = {};
        measure::SReadyFrame ready = {};
        std::optional<measure::CError> fault = {};
    };

    /// What the recording says before its first frame; of a pipe the first frame is taken for it, and answered.
    std::optional<SStep> Gather(const measure::CSource& source, CFrameWalk& walk, reduce::CReduceObjectArray& objects) {
        if (source.IsNumbered()) {
            const auto frames = source_.Frames(source);
            measure::GatherMetadata(source, frames ? *frames : measure::CFrameNumbers::All(*source.Count()), objects);
            return {};
        }
        for (auto step = Read(walk, {}); step; step = Read(walk, {})) {
            if (step->fault) {
                Skip(*step->fault);
                continue;
            }
            measure::GatherMetadata(source, std::span(&step->raw, 1), objects);
            return step;
        }
        return {};
    }

    /// Nothing at the end.
    static std::optional<SStep> Read(CFrameWalk& walk, const std::stop_token& stop) {
        SStep step;
        try {
            if (!walk.Next(step.raw, stop)) return {};
        } catch (const measure::CError& error) {
            step.fault = error;
        }
        return step;
    }

    /// Says a frame that would not do, where it is to be skipped; else, and for what is no frame's fault, throws.
    void Skip(const measure::CError& error) {
        const CFault fault = FaultOf(error);
        const bool ofFrame = error.Facts().frame && fault.Exit() == ExitBadData;
        if (!ofFrame || source_.OnError() == measure::EOnFault::Stop) throw measure::CError(error);
        ++skipped_;
        Say(std::string(fault.what()) + " (skipped)");
    }

    /// Frames are read one after the other, made ready side by side, and written in order.
    void WriteAll(const measure::CSource& source, CFrameWalk& walk, std::optional<SStep> first,
                  measure::CRecordingWriter& writer) {
        CProgress progress("frame", walk.Total());
        std::size_t said = source.Findings().size();
        const auto next = [&](const std::stop_token& stop) {
            return first ? std::exchange(first, std::nullopt) : Read(walk, stop);
        };
        const auto prepare = [&](SStep step) {
            if (step.fault) return step;
            try {
                step.ready = writer.Prepare(step.raw.bytes);
            } catch (const measure::CError& error) {
                step.fault = FaultOf(error).Exit() == ExitBadData ? error.Of(source.Name(), step.raw.number) : error;
            }
            return step;
        };
        measure::InOrder(measure::ThreadsOf(source_.Jobs()), next, prepare, [&](const SStep& step) {
            source_.SayNew(source, said);
            if (step.fault) return Skip(*step.fault);
            writer.Add(step.ready);
            progress.Show(++done_);
        });
        source_.SayNew(source, said);
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
        if (!output_.SaysJson()) {
            Say(fmt::format("{}: {} {} of {} bytes", output_.File(), done_, done_ == 1 ? "frame" : "frames",
                            frameSize));
            return;
        }
        PrintJson({{"schema", kSchemaVersion},
                   {"output", output_.File()},
                   {"frames", done_},
                   {"skipped", skipped_},
                   {"frameBytes", frameSize},
                   {"bytes", bytes},
                   {"complete", CSourceArguments::Exit(source, skipped_) == ExitDone},
                   {"findings", FindingsJson(source.Findings())}});
    }

    CSourceArguments source_;
    CSceneArguments given_;
    COutputArguments output_;
    measure::SWriteOptions how_;
    u64 done_ = 0;
    u64 skipped_ = 0;
};

}  // namespace

std::unique_ptr<ICommand> MakeRecordCommand() { return std::make_unique<CRecordCommand>(); }

}  // namespace ovix::app
