#include <fmt/format.h>

#include <CLI/CLI.hpp>

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
        verb.add_option("-o,--output", output_, "the new recording")->required()->type_name("FILE");
        verb.add_flag("--overwrite", overwrite_, "replace a file that exists");
        verb.add_flag("--json", json_, "say what was done as JSON");
    }
    EExit Run() override {
        CWayOut out(output_);
        std::vector<measure::SFinding> notes;
        const measure::SRepaired repaired = measure::RepairRecording(file_, out.Path(), {.overwrite = overwrite_},
                                                                     [&](const measure::SFinding& finding) {
                                                                         if (!json_) Say(FindingLine(file_, finding));
                                                                         notes.push_back(finding);
                                                                     });
        out.Send();
        if (json_) {
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_},
                       {"frames", repaired.frames},
                       {"leftOut", repaired.leftOut},
                       {"findings", FindingsJson(notes)}});
        } else {
            Say(fmt::format("{}: {} {}", output_, repaired.frames, repaired.frames == 1 ? "frame" : "frames"));
        }
        return repaired.leftOut ? ExitSkipped : ExitDone;
    }

  private:
    std::string file_;
    std::string output_;
    bool overwrite_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeRepairCommand() { return std::make_unique<CRepairCommand>(); }

}  // namespace ovix::app
