#include "apps/ovix/cli/measure_run.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/ovix/fault.h"

namespace ovix::app {

void CMeasureRun::AddOption(CLI::App& verb, bool& merge) {
    verb.add_flag("--merge-presets", merge,
                  "merge consecutive frames of different presets: each pixel is taken from the first preset in which "
                  "it is not above the threshold (settings as recorded, else 15000 counts)")
        ->group("Measurement");
}

CMeasureRun::CMeasureRun(const measure::CMeasurement& measurement, const CSourceArguments& arguments, bool merge)
    : measurement_(measurement),
      arguments_(arguments),
      frames_(arguments.Frames(measurement.Source())),
      merge_(merge),
      saidFindings_(measurement.Source().Findings().size()) {}

std::optional<u64> CMeasureRun::Count() const {
    const measure::CSource& source = measurement_.Source();
    if (!source.IsNumbered()) return {};
    return frames_ ? frames_->Count() : *source.Count();
}

measure::CFrame CMeasureRun::First() {
    std::optional<measure::CFrame> found;
    measure::SSeriesOptions options = Options("looking ahead: frame", false);
    options.threads = 1;
    measure::CSeries series(measurement_, std::move(options));
    series_ = &series;
    for (measure::CFrame& frame : series) {
        found = std::move(frame);
        break;
    }
    End(false);
    if (!found) throw NothingDone();
    return std::move(*found);
}

CAppError CMeasureRun::NothingDone() const {
    return CAppError(ExitBadData, merge_ ? "not one cycle of presets would do"
                                         : fmt::format("not one of {} frames would do", Count().value_or(skipped_)));
}

u64 CMeasureRun::CountMerged() {
    const measure::CSource& source = measurement_.Source();
    std::vector<u8> presets;  // of the cycle at hand
    u64 cycles = 0;
    measure::SRawFrame raw;
    for (u64 n = 0; n < Count().value_or(0); ++n) {
        try {
            source.Read(frames_ ? (*frames_)[n] : n, raw);
            const u8 preset = measurement_.PresetOf(raw);
            if (presets.empty() || std::ranges::find(presets, preset) != presets.end()) {
                presets.clear();
                ++cycles;
            }
            presets.push_back(preset);
        } catch (const measure::CError&) {
            continue;  // left out of its cycle
        }
    }
    return cycles;
}

std::optional<u64> CMeasureRun::Results() { return merge_ && Count() ? std::optional(CountMerged()) : Count(); }

measure::SSeriesOptions CMeasureRun::Options(const char* doing, bool says) {
    progress_.emplace(doing, Count().value_or(0));
    saidFaults_ = 0;
    done_ = skipped_ = 0;
    return {.frames = frames_,
            .threads = arguments_.Jobs(),
            .onFault = arguments_.OnError(),
            .mergePresets = merge_,
            .progress = [this, says](u64 done, std::optional<u64> total) { Progress(done, total, says); }};
}

void CMeasureRun::Progress(u64 done, std::optional<u64>, bool says) {
    done_ = done;
    skipped_ = series_->FaultCount();
    if (says) SaySkipped();
    progress_->Show(done);
}

void CMeasureRun::SaySkipped() {
    const std::vector<measure::CError>& faults = series_->Faults();
    for (; saidFaults_ < faults.size(); ++saidFaults_) {
        progress_->Hide();
        Say(std::string(FaultOf(faults[saidFaults_]).what()) + " (skipped)");
    }
    if (measurement_.Source().Findings().size() > saidFindings_) {
        progress_->Hide();
        arguments_.SayNew(measurement_.Source(), saidFindings_);
    }
}

void CMeasureRun::End(bool says) {
    done_ = series_->Done();
    skipped_ = series_->FaultCount();
    if (says) SaySkipped();
    progress_.reset();
    series_ = nullptr;
    if (!done_ && says) throw NothingDone();
}

}  // namespace ovix::app
