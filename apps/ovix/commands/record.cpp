#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/pipeline/correction_tables.h"
#include "apps/ovix/pipeline/scene_override.h"
#include "apps/ovix/recording/library_file.h"
#include "apps/ovix/recording/recording_writer.h"
#include "apps/ovix/user_calibration.h"

namespace ovix::app {

namespace {

class CRecordCommand final : public ICommand {
  public:
    const char* Verb() const override { return "record"; }
    const char* Brief() const override { return "raw frames to a recording"; }
    const char* Examples() const override {
        return "ovix record dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 -o run.krt\n"
               "ovix record dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --emissivity 0.95 --correction nuc "
               "-o run.krt\n"
               "ovix record run.krt --frames 100-199 -o part-of-run.krt";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        told_.Add(verb);
        const char* group = "Output";
        verb.add_option("-o,--output", output_, "the recording")->required()->type_name("FILE")->group(group);
        verb.add_flag("--unpacked", unpacked_, "say that frames are stored as the camera delivers them")->group(group);
        verb.add_flag("--keep-part", keepPart_,
                      "write to FILE.part until all frames are there, and leave that where the recording does not come "
                      "to its end, for \"ovix repair\"")
            ->group(group);
        verb.add_flag("--overwrite", overwrite_, "replace a file that exists")->group(group);
        verb.add_flag("--json", json_, "say what was done as JSON")->group(group);
    }

    EExit Run() override {
        const SSceneValues scene = told_.Scene();
        const std::optional<CRCalFile> userCalibration = told_.UserCalibration();
        const auto source = source_.Open();
        CFrameLoop frames = source_.Frames(*source);
        const u32 frameSize = FrameSize(*source, frames);

        reduce::CReduceObjectArray objects;
        GatherMetadata(*source, frames.Frames(), objects);
        for (const SCorrectionFiles& files : told_.Corrections())
            LoadCorrectionTables(objects, files, source->Format());
        if (userCalibration) PutUserCalibration(*userCalibration, objects);
        OverrideScene(objects, scene);
        SetPacket(*objects.GetSourceInfo(false), frameSize);

        COutputFile output(output_, overwrite_, keepPart_);
        CLibraryOutput library(output);
        CRecordingWriter writer(BorrowShared<IFile>(library), objects, source->Format(), frameSize, unpacked_);
        std::vector<u8> frame;
        frames.Run([&](u64 number) {
            try {
                source->Read(number, frame);
                writer.Add(frame);
            } catch (const CFault& fault) {
                if (fault.Exit() == ExitFile) throw;  // no frame's fault
                throw fault.Of(source->Name(), number);
            }
        });
        writer.Finish();
        output.Commit();
        Report(frames, frameSize, output.Size());
        return frames.Exit();
    }

  private:
    /// Of frames that differ the largest is looked for, ahead of all else.
    static u32 FrameSize(IFrameSource& source, CFrameLoop& frames) {
        if (source.FrameSize()) return static_cast<u32>(source.FrameSize());
        const CGuardedDecode decode(source.Format());
        std::size_t largest = 0;
        std::vector<u8> frame;
        frames.RunAhead([&](u64 number) {
            try {
                source.Read(number, frame);
                decode.Check(frame);
            } catch (const CFault& fault) {
                throw fault.Of(source.Name(), number);
            }
            largest = std::max(largest, frame.size());
        });
        return static_cast<u32>(largest);
    }

    void Report(const CFrameLoop& frames, u32 frameSize, u64 bytes) const {
        if (!json_) {
            Say(fmt::format("{}: {} {} of {} bytes", output_, frames.Done(), frames.Done() == 1 ? "frame" : "frames",
                            frameSize));
            return;
        }
        PrintJson({{"schema", kSchemaVersion},
                   {"output", output_},
                   {"frames", frames.Done()},
                   {"skipped", frames.Skipped()},
                   {"frameBytes", frameSize},
                   {"bytes", bytes}});
    }

    CSourceArguments source_;
    CSceneArguments told_;
    std::string output_;
    bool unpacked_ = false;
    bool keepPart_ = false;
    bool overwrite_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeRecordCommand() { return std::make_unique<CRecordCommand>(); }

}  // namespace ovix::app
