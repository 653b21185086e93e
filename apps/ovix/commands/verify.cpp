#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

class CVerifyCommand final : public ICommand {
  public:
    const char* Verb() const override { return "verify"; }
    const char* Brief() const override {
        return "hold a recording's CRCs, sizes, counts and frames against each other";
    }
    const char* Examples() const override {
        return "ovix verify run.krt\novix verify run.krt --json\novix verify run.krt --make-checksums";
    }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("FILE", file_, "a recording")->required()->type_name("");
        verb.add_flag("--make-checksums", makeChecksums_,
                      "of a sound recording: write a CRC of each frame to FILE.crc, against which every verb holds the "
                      "frames that it reads from then on");
        verb.add_flag("--overwrite", overwrite_, "replace a file of sums that exists");
        verb.add_option("--jobs", jobs_, "frames in work at once (else as many as the machine has processors)")
            ->type_name("N");
        verb.add_flag("--json", json_, "one JSON document");
    }
    EExit Run() override {
        if (overwrite_ && !makeChecksums_) throw UsageFault("--overwrite goes with --make-checksums");
        const unsigned jobs = ParseJobs(jobs_);
        u64 counts[3] = {};
        std::vector<measure::SFinding> listed;
        const auto look = [&](const measure::SFinding& finding) {
            ++counts[static_cast<std::size_t>(finding.weight)];
            if (!json_)
                Print(FindingLine(file_, finding) + '\n');
            else if (listed.size() < kMostListed)
                listed.push_back(finding);
        };
        const bool good = measure::CheckRecording(file_, look, jobs);
        if (good && makeChecksums_) measure::MakeChecksums(file_, overwrite_, jobs);
        Report(good, counts, listed);
        return good ? ExitDone : ExitBadData;
    }

  private:
    static constexpr std::size_t kMostListed = 1000;

    void Report(bool good, const u64 (&counts)[3], const std::vector<measure::SFinding>& listed) const {
        const auto damage = counts[static_cast<std::size_t>(measure::EWeight::Damage)];
        const std::vector<measure::SBlock> blocks = measure::BlocksOf(file_);
        const u64 frames = good ? Frames() : 0;
        if (json_) {
            PrintJson({{"schema", kSchemaVersion},
                       {"file", file_},
                       {"good", good},
                       {"blocks", blocks.size()},
                       {"frames", good ? Json(frames) : Json()},
                       {"faultCount", damage},
                       {"doubtCount", counts[static_cast<std::size_t>(measure::EWeight::Doubt)]},
                       {"findings", FindingsJson(listed)}});
        } else if (good) {
            Print(fmt::format("{}: good, {} blocks and {} frames\n", file_, blocks.size(), frames));
        } else {
            Print(fmt::format("{}: damaged, {} {}\n", file_, damage, damage == 1 ? "fault" : "faults"));
        }
    }
    /// None in an info file, which holds blocks alone.
    u64 Frames() const {
        try {
            return measure::Open(file_).Count().value_or(0);
        } catch (const measure::CError& error) {
            if (error.Id() == measure::EError::NoFrames) return 0;
            throw;
        }
    }

    std::string file_;
    std::string jobs_;
    bool makeChecksums_ = false;
    bool overwrite_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeVerifyCommand() { return std::make_unique<CVerifyCommand>(); }

}  // namespace ovix::app
