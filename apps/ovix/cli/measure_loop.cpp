#include "apps/ovix/cli/measure_loop.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "apps/ovix/fault.h"

namespace ovix::app {

void CMeasureLoop::AddOption(CLI::App& verb, bool& merge) {
    verb.add_flag("--merge-presets", merge,
                  "merge consecutive frames of different presets: each pixel is taken from the first preset in which "
                  "it is not above the threshold (settings as recorded, else 15000 counts)")
        ->group("Measurement");
}

CMeasureLoop::CMeasureLoop(CFrameLoop& frames, IFrameSource& source, CMeasurement& measurement, bool merge)
    : frames_(frames), source_(source), measurement_(measurement) {
    if (!merge) return;
    decode_.emplace(source.Format());
    source.Describe(objects_);
}

void CMeasureLoop::Run(const Sink& sink) {
    frames_.Run(Work(sink), Rest(sink));
    if (!done_) throw CAppError(ExitBadData, "not one cycle of presets would do");
}

void CMeasureLoop::RunAhead(const Sink& sink) { frames_.RunAhead(Work(sink), Rest(sink)); }

u64 CMeasureLoop::Count() {
    if (!decode_) return frames_.Count();
    EndCycle();
    u64 cycles = 1;  // the last, behind which no frame stands
    frames_.RunAhead([&](u64 number) { cycles += !Add(number).empty(); });
    return cycles;
}

CMeasureLoop::Cycle CMeasureLoop::Add(u64 number) {
    const u8 preset = PresetOf(number);
    Cycle ended;
    if (std::find(presets_.begin(), presets_.end(), preset) != presets_.end()) ended = EndCycle();
    cycle_.push_back(number);
    presets_.push_back(preset);
    return ended;
}

CMeasureLoop::Cycle CMeasureLoop::EndCycle() {
    presets_.clear();
    return std::exchange(cycle_, {});
}

u8 CMeasureLoop::PresetOf(u64 number) {
    try {
        source_.Read(number, frame_);
        return decode_->DecodeMetadata(frame_, objects_);
    } catch (const CFault& fault) {
        throw fault.Of(source_.Name(), number);
    }
}

CFrameLoop::Work CMeasureLoop::Work(const Sink& sink) {
    EndCycle();
    done_ = 0;
    return [this, &sink](u64 number) {
        const Cycle cycle = decode_ ? Add(number) : Cycle{number};
        if (cycle.empty()) return;
        sink(decode_ ? measurement_.MeasureMerged(cycle) : measurement_.Measure(number));
        ++done_;
    };
}

CFrameLoop::Rest CMeasureLoop::Rest(const Sink& sink) {
    return [this, &sink] {
        const Cycle cycle = EndCycle();
        if (cycle.empty()) return;
        sink(measurement_.MeasureMerged(cycle));
        ++done_;
    };
}

}  // namespace ovix::app
