#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>

#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

/// Files that processes which are no more left behind when they were writing this target.
std::vector<std::filesystem::path> DeadPartsOf(const std::filesystem::path& target) {
    const std::string start = '.' + target.filename().string() + '.';
    std::vector<std::filesystem::path> parts;
    std::error_code ignored;
    const auto folder = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string name = entry.path().filename().string();
        pid_t process = 0;
        if (!name.starts_with(start) || !name.ends_with(".part")) continue;
        const auto [end, error] = std::from_chars(name.data() + start.size(), name.data() + name.size(), process);
        if (error != std::errc{} || *end != '-' || process <= 0) continue;
        if (::kill(process, 0) != 0 && errno == ESRCH) parts.push_back(target.parent_path() / name);
    }
    std::ranges::sort(parts);
    return parts;
}

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
        verb.add_flag("--clean", clean_,
                      "remove what processes that are no more left behind when they wrote this file");
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
        const std::vector<std::filesystem::path> parts = DeadPartsOf(file_);
        for (const auto& part : parts) SayPart(part);
        const std::string unfinished = file_ + ".part";
        if (std::error_code none; !json_ && std::filesystem::exists(unfinished, none))
            Print(FindingLine(unfinished, {.what = "a recording that is being written or was never finished; \"ovix "
                                                   "repair\" makes one of what is there"}) +
                  '\n');
        if (good && makeChecksums_) measure::MakeChecksums(file_, overwrite_, jobs);
        Report(good, counts, listed, parts);
        return good ? ExitDone : ExitBadData;
    }

  private:
    static constexpr std::size_t kMostListed = 1000;

    void SayPart(const std::filesystem::path& part) const {
        if (clean_ && ::unlink(part.c_str()) != 0) throw SystemFault(ExitFile, part.string(), "cannot remove", errno);
        if (!json_)
            Print(FindingLine(part.string(), {.what = clean_ ? "left behind by a process that is no more; removed"
                                                             : "left behind by a process that is no more; --clean "
                                                               "removes it"}) +
                  '\n');
    }

    void Report(bool good, const u64 (&counts)[3], const std::vector<measure::SFinding>& listed,
                const std::vector<std::filesystem::path>& parts) const {
        const auto damage = counts[static_cast<std::size_t>(measure::EWeight::Damage)];
        const std::vector<measure::SBlock> blocks = measure::BlocksOf(file_);
        const u64 frames = good ? Frames() : 0;
        if (json_) {
            Json left = Json::array();
            for (const auto& part : parts) left.push_back(part.string());
            PrintJson({{"schema", kSchemaVersion},
                       {"file", file_},
                       {"good", good},
                       {"blocks", blocks.size()},
                       {"frames", good ? Json(frames) : Json()},
                       {"faultCount", damage},
                       {"doubtCount", counts[static_cast<std::size_t>(measure::EWeight::Doubt)]},
                       {"findings", FindingsJson(listed)},
                       {clean_ ? "removed" : "leftBehind", std::move(left)}});
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
    bool clean_ = false;
    bool makeChecksums_ = false;
    bool overwrite_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeVerifyCommand() { return std::make_unique<CVerifyCommand>(); }

}  // namespace ovix::app
