#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/output/spool.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace {

class CRepairCommand final : public ICommand {
  public:
    const char* Verb() const override { return "repair"; }
    const char* Brief() const override {
        return "bring back a recording that was never finished, is cut or damaged, with every whole frame";
    }
    const char* Examples() const override {
        return "ovix repair run.krt.part -o run.krt\novix repair broken.krt -o good.krt";
    }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("FILE", file_, "a recording; it stays as it is")->required()->type_name("");
        output_.Add(verb, "the new recording");
    }
    EExit Run() override {
        CWayOut out(output_.File());
        std::vector<measure::SFinding> notes;
        const measure::SRepaired repaired = measure::RepairRecording(
            file_, out.Path(), {.overwrite = output_.Overwrites()}, [&](const measure::SFinding& finding) {
                if (!output_.SaysJson()) Say(FindingLine(file_, finding));
                notes.push_back(finding);
            });
        out.Send();
        if (output_.SaysJson()) {
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_.File()},
                       {"frames", repaired.frames},
                       {"leftOut", repaired.leftOut},
                       {"findings", FindingsJson(notes)}});
        } else {
            Say(fmt::format("{}: {} {}", output_.File(), repaired.frames, repaired.frames == 1 ? "frame" : "frames"));
        }
        return repaired.leftOut ? ExitSkipped : ExitDone;
    }

  private:
    std::string file_;
    COutputArguments output_;
};

}  // namespace

std::unique_ptr<ICommand> MakeRepairCommand() { return std::make_unique<CRepairCommand>(); }

}  // namespace ovix::app
