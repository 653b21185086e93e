#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/recording/recording_check.h"

namespace ovix::app {

namespace {

/// The findings in words, each as it comes, or the first of them in one document.
class CFindingPrinter {
  public:
    CFindingPrinter(std::string file, bool json) : file_(std::move(file)), json_(json) {}

    void Add(const SFinding& finding) {
        constexpr std::size_t kMostListed = 1000;
        ++count_;
        if (!json_) {
            const CFault line({.file = file_,
                               .offset = finding.offset,
                               .problem = finding.what,
                               .expected = finding.expected,
                               .found = finding.found});
            Print(std::string(line.what()) + '\n');
        } else if (list_.size() < kMostListed) {
            list_.push_back({{"offset", finding.offset},
                             {"what", finding.what},
                             {"expected", finding.expected},
                             {"found", finding.found}});
        }
    }
    void End(const CRecordingFile& file) const {
        const u64 frames = file.HasPixels() ? file.WholeFrames() : 0;
        if (json_) {
            PrintJson({{"schema", kSchemaVersion},
                       {"file", file_},
                       {"good", count_ == 0},
                       {"blocks", file.Blocks().size()},
                       {"frames", frames},
                       {"faultCount", count_},
                       {"faults", list_}});
        } else if (count_ == 0) {
            Print(fmt::format("{}: good, {} blocks and {} frames\n", file_, file.Blocks().size(), frames));
        } else {
            Print(fmt::format("{}: damaged, {} {}\n", file_, count_, count_ == 1 ? "fault" : "faults"));
        }
    }

  private:
    std::string file_;
    bool json_;
    u64 count_ = 0;
    Json list_ = Json::array();
};

class CVerifyCommand final : public ICommand {
  public:
    const char* Verb() const override { return "verify"; }
    const char* Brief() const override {
        return "hold a recording's CRCs, sizes, counts and frames against each other";
    }
    const char* Examples() const override { return "ovix verify run.krt\novix verify run.krt --json"; }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("FILE", file_, "a recording; - is the standard input")->required()->type_name("");
        verb.add_flag("--json", json_, "one JSON document");
    }
    EExit Run() override {
        const CRecordingFile file = OpenRecording(file_);
        CFindingPrinter printer(file.Name(), json_);
        const CRecordingCheck::Report report = [&](const SFinding& finding) { printer.Add(finding); };
        const bool good = CRecordingCheck(file, report).Run();
        printer.End(file);
        return good ? ExitDone : ExitBadData;
    }

  private:
    std::string file_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeVerifyCommand() { return std::make_unique<CVerifyCommand>(); }

}  // namespace ovix::app
