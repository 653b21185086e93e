#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/json.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

class CIndexCommand final : public ICommand {
  public:
    const char* Verb() const override { return "index"; }
    const char* Brief() const override {
        return "where the counts of many recordings stand, so that readers of Zarr open them as one array";
    }
    const char* Examples() const override {
        return "ovix index run.krt -o archive.json\n"
               "ovix index run.krt --base-url https://example.org/archive -o archive.json";
    }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("FILE", files_, "recordings, or dumps of raw frames of one kind")->required()->type_name("");
        const auto add = [&](const char* group, const char* name, std::string& value, const char* type,
                             const char* help) {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        add("Input", "--pixel-type", options_.pixelType, "NAME", "of dumps: pixel type of the frames");
        add("Input", "--size", size_, "WxH", "of dumps: size of the image in pixels");
        output_.Add(verb, "the references (JSON)");
        add("Output", "--base-url", how_.baseUrl, "URL",
            "name the files by this and their names, for readers over HTTP (else by their full paths)");
        add("Output", "--frames-per-reference", together_, "N",
            "so many frames are one reference, of a structured type (else 1)");
    }

    EExit Run() override {
        if (!size_.empty()) std::tie(options_.width, options_.height) = ParseSize("--size", size_);
        if (!together_.empty()) {
            const auto together = ParseNumber<u64>(together_);
            if (!together || !*together)
                throw UsageFault("--frames-per-reference: expected at least 1, found \"" + together_ + "\"");
            how_.framesPerReference = *together;
        }
        while (how_.baseUrl.ends_with('/')) how_.baseUrl.pop_back();
        for (const std::string& file : files_) RememberInput(file);
        COutputFile output(output_.File(), output_.Overwrites());
        CProgress progress("file", files_.size());
        how_.progress = [&](u64 done, u64) { progress.Show(done); };
        bool damaged = false;
        Json findings = Json::array();
        how_.report = [&](const std::string& file, const measure::SFinding& finding) {
            findings.push_back(FindingsJson({&finding, 1}).front());
            findings.back()["file"] = file;
            damaged = damaged || finding.weight == measure::EWeight::Damage;
            if (finding.weight != measure::EWeight::Note) Say(FindingLine(file, finding));
        };
        const std::vector<std::filesystem::path> files(files_.begin(), files_.end());
        const std::string text = measure::ZarrReferences(files, options_, how_);
        output.Write(text.data(), text.size());
        output.Commit();
        if (output_.SaysJson())
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_.File()},
                       {"files", files.size()},
                       {"bytes", text.size()},
                       {"complete", !damaged},
                       {"findings", findings}});
        else
            Say(fmt::format("{}: {} {}", output_.File(), files.size(), files.size() == 1 ? "file" : "files"));
        return damaged ? ExitSkipped : ExitDone;
    }

  private:
    std::vector<std::string> files_;
    measure::SOpenOptions options_;
    measure::SReferenceOptions how_;
    std::string size_;
    std::string together_;
    COutputArguments output_;
};

}  // namespace

std::unique_ptr<ICommand> MakeIndexCommand() { return std::make_unique<CIndexCommand>(); }

}  // namespace ovix::app
