#include "apps/ovix/cli/source_arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>

#include "apps/ovix/cli/frame_selection.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/small_text.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/output/spool.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

using measure::CSource;
using measure::EOnFault;
using measure::EWeight;

void CSourceArguments::Add(CLI::App& verb, EInputs inputs) {
    const char* group = "Input";
    if (inputs == EInputs::One) {
        verb.add_option(
                "FILE", file_,
                "a recording, a dump of raw frames, or a .npy, .tif or .png of 16-bit counts; - is the standard input")
            ->required()
            ->type_name("");
    } else {
        verb.add_option(
                "FILE", files_,
                "recordings, dumps of raw frames, and .npy, .tif and .png of 16-bit counts; - is the standard input")
            ->type_name("");
        verb.add_option("--files-from", filesFrom_,
                        "more files, whose names stand in this one, a line each or with a zero byte behind each; - is "
                        "the standard input")
            ->type_name("LIST")
            ->group(group);
    }
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        verb.add_option(name, value, help)->type_name(type)->group(group);
    };
    const auto flag = [&](const char* name, bool& value, const char* help) {
        return verb.add_flag(name, value, help)->group(group);
    };
    add("--pixel-type", pixelType_, "NAME",
        "of a dump: pixel type of the frames, a name that \"ovix formats\" lists or a GUID; counts or counts-be for "
        "plain 16-bit pixels, RGB24 for plain colours");
    add("--size", size_, "WxH", "of a dump: size of the image in pixels");
    add("--frame-size", frameSize_, "BYTES",
        "of a dump: bytes of each frame with all that stands behind its pixels (else found)");
    add("--frames", frames_, "LIST", "frames, from 0, ends included, -1 the last: 0-99,200-400x10,-1 (else all)");
    add("--on-error", onError_, "stop|skip", "what to do at a frame that would not do (else stop)");
    add("--jobs", jobs_, "N", "frames in work at once (else as many as the machine has processors)");
    auto* follow = flag("--follow", follow_, "the file grows: go on until it is finished");
    add("--timeout", timeout_, "SECONDS", "of --follow: end when nothing came for so long (else 10)");
    flag("--spool", spool_, "copy a pipe to a temporary file first, so that its frames have numbers")->excludes(follow);
    flag("--strict", strict_, "doubts about the source are errors");
    flag("--accept-damage", acceptDamage_, "go on with a recording whose metadata are damaged");
}

std::vector<CSourceArguments> CSourceArguments::Each() const {
    std::vector<std::string> names = files_;
    if (!filesFrom_.empty()) {
        const std::string list = ReadSmallText(filesFrom_, "a list of files");
        const char separator = list.find('\0') == list.npos ? '\n' : '\0';
        for (const std::string_view name : SplitText(list, separator)) {
            if (!name.empty()) names.emplace_back(name);
        }
    }
    if (names.empty()) throw UsageFault("FILE is required");
    if (std::ranges::count(names, "-") > 1) throw UsageFault("-: the standard input is there once");
    std::vector<CSourceArguments> each;
    bool described = !Describes();
    for (const std::string& name : names) {
        RememberInput(name);
        each.push_back(*this);
        each.back().file_ = name;
        if (names.size() == 1 || !Describes()) continue;
        if (measure::SaysItsFormat(name))
            each.back().pixelType_ = each.back().size_ = each.back().frameSize_ = "";
        else
            described = true;
    }
    if (names.size() > 1 && !described)
        throw UsageFault(
            fmt::format("{}: not one of the {} files is a dump, which it could describe", GivenOfDump(), names.size()));
    return each;
}

std::string CSourceArguments::GivenOfDump() const {
    std::string given;
    for (const auto& [option, value] : {std::pair("--pixel-type", &pixelType_), std::pair("--size", &size_),
                                        std::pair("--frame-size", &frameSize_)}) {
        if (!value->empty()) given += (given.empty() ? "" : ", ") + std::string(option);
    }
    return given;
}

measure::SOpenOptions CSourceArguments::Options() const {
    measure::SOpenOptions options{.pixelType = pixelType_, .follow = follow_, .acceptDamage = acceptDamage_};
    if (!size_.empty()) std::tie(options.width, options.height) = ParseSize("--size", size_);
    if (!frameSize_.empty()) {
        const auto bytes = ParseNumber<u32>(frameSize_);
        if (!bytes || !*bytes)
            throw UsageFault("--frame-size: expected a number of bytes, found \"" + frameSize_ + "\"");
        options.frameSize = *bytes;
    }
    if (!timeout_.empty()) {
        if (!follow_) throw UsageFault("--timeout goes with --follow");
        options.patience =
            std::chrono::milliseconds(static_cast<i64>(1000 * ParseWithin("--timeout", timeout_, 0.001f, 1e6f)));
    }
    return options;
}

CSource CSourceArguments::Open(bool acceptDamage) const {
    measure::SOpenOptions options = Options();
    options.acceptDamage = options.acceptDamage || acceptDamage;
    RememberInput(file_);
    try {
        const auto require = [&](bool isDump) {
            if (!isDump) throw UsageFault(fmt::format("{}: {} says it by itself", GivenOfDump(), file_));
        };
        require(!Describes() || !measure::SaysItsFormat(file_));
        CSource source = spool_ ? OpenSpooled(options) : measure::Open(file_, options);
        require(!Describes() || source.Kind() != measure::ESource::Recording);  // which a pipe brought
        std::size_t said = 0;
        SayNew(source, said);
        return source;
    } catch (const measure::CError& error) {
        SFault facts = FaultOf(error).Facts();
        if (error.Id() == measure::EError::UnknownFormat && pixelType_.empty() && facts.expected.empty()) {
            facts.exit = Describes() ? ExitUsage : ExitFile;
            facts.problem = "is of no known format; a dump of raw frames needs --pixel-type and --size";
            facts.advice.clear();
        }
        if (error.Id() == measure::EError::MetadataDamaged) facts.advice = "--accept-damage reads it all the same";
        if (error.Id() == measure::EError::NotNumbered) facts.advice = "--spool copies it to a temporary file first";
        if (error.Id() == measure::EError::BlocksBroken)
            facts.advice = "\"ovix verify\" tells more, \"ovix repair\" may bring it back";
        throw CFault(std::move(facts));
    }
}

CSource CSourceArguments::OpenSpooled(const measure::SOpenOptions& options) const {
    const CSpool spool(file_);
    return measure::OpenDescriptor(spool.Descriptor(), spool.Name(), options);
}

void CSourceArguments::SayNew(const CSource& source, std::size_t& said) const {
    const std::vector<measure::SFinding> findings = source.Findings();
    for (; said < findings.size(); ++said) {
        const measure::SFinding& finding = findings[said];
        if (finding.weight == EWeight::Note && !SaysNotes()) continue;
        const std::string line = FindingLine(source.Name(), finding);
        if (finding.weight == EWeight::Doubt && strict_) throw CAppError(ExitBadData, line);
        Say(line);
    }
}

std::optional<measure::CFrameNumbers> CSourceArguments::Frames(const CSource& source) const {
    if (frames_.empty()) return {};
    const CFrameSelection selection(frames_);
    return source.IsNumbered() ? selection.Of(*source.Count()) : selection.InOrder();
}

void CSourceArguments::ReadOne(const CSource& source, const std::string& text, const char* option,
                               measure::SRawFrame& raw) {
    const CFrameSelection selection(text, option);
    if (source.IsNumbered()) return source.Read(selection.OneOf(*source.Count()), raw);
    const measure::CFrameNumbers chosen = selection.InOrder();
    if (chosen.Count() != 1) throw UsageFault(fmt::format("{}: expected one frame, found \"{}\"", option, text));
    while (source.Next(raw)) {
        if (raw.number == chosen[0]) return;
    }
    throw UsageFault(fmt::format("{} {}: {} ended before", option, text, source.Name()));
}

EOnFault CSourceArguments::OnError() const {
    return ParseChoice<EOnFault>("--on-error", onError_, {{"stop", EOnFault::Stop}, {"skip", EOnFault::Skip}});
}

unsigned CSourceArguments::Jobs() const { return ParseJobs(jobs_); }

EExit CSourceArguments::Exit(const CSource& source, u64 skipped) {
    return skipped || source.Worst() == EWeight::Damage ? ExitSkipped : ExitDone;
}

}  // namespace ovix::app
