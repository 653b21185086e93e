#include "measure/series/series.h"

#include <unistd.h>

#include <algorithm>
#include <limits>

#include "measure/in_order.h"
#include "measure/series/series_engine.h"

namespace ovix::measure {

namespace {

constexpr u8 kNoData = 32;  ///< of a pixel's status

}  // namespace

struct CSeries::SBody {
    void Start(u64 from) {
        owner = ::getpid();
        engine = std::make_unique<CSeriesEngine>(measurement, options, threads, from, map);
    }
    void End() {
        // The threads of a forked process stayed with its parent: nobody can wait for them here.
        if (engine && owner != ::getpid()) static_cast<void>(engine.release());
        engine.reset();
    }
    /// Nothing where it shows at the end only.
    std::optional<u64> Total() const {
        if (options.mergePresets || !measurement.Source().IsNumbered()) return {};
        return options.frames ? options.frames->Count() : measurement.Source().Count();
    }
    void FollowFork();
    void CheckStop() const;
    void Keep(const SPortion& portion);
    bool Judge(SSlot& slot);
    void Fill(SSlot& slot) const;

    CMeasurement measurement;
    SSeriesOptions options;
    unsigned threads;
    Map map = {};
    pid_t owner = 0;
    std::unique_ptr<CSeriesEngine> engine = {};
    SSlot* slot = nullptr;
    bool handed = false;  ///< its frame went to the caller
    u64 next = 0;         ///< place in the choice behind what was handed over
    u64 done = 0;
    std::vector<CError> faults = {};
    u64 faultCount = 0;
};

CSeries::CSeries(const CMeasurement& measurement, SSeriesOptions options)
    : body_(std::make_unique<SBody>(SBody{measurement, std::move(options), 0})) {
    body_->threads = ThreadsOf(body_->options.threads);
}

CSeries::~CSeries() { body_->End(); }

CSeries::CRun::CRun(CSeries& series, Map map) : series_(&series) {
    SBody& body = *series.body_;
    body.End();
    body.map = std::move(map);
    body.handed = false;
    body.next = body.done = body.faultCount = 0;
    body.faults.clear();
    body.Start(0);
}

CSeries::CRun::~CRun() {
    if (series_) series_->body_->End();
}

std::size_t CSeries::Slots() const { return CSeriesEngine::SlotsOf(body_->threads); }
std::size_t CSeries::CurrentSlot() const { return body_->engine->Current(); }
CFrame& CSeries::Current() { return body_->slot->frame; }
u64 CSeries::Done() const { return body_->done; }
const std::vector<CError>& CSeries::Faults() const { return body_->faults; }
u64 CSeries::FaultCount() const { return body_->faultCount; }

bool CSeries::Advance() {
    SBody& body = *body_;
    // Of the frame before, which the caller has done with by now.
    if (std::exchange(body.handed, false) && body.options.progress) body.options.progress(body.done, body.Total());
    body.FollowFork();
    while ((body.slot = body.engine->Next())) {
        body.handed = body.Judge(*body.slot);
        body.next = body.slot->portion.next;
        body.done += body.handed;
        if (body.handed) return true;
    }
    body.CheckStop();
    body.End();
    return false;
}

void CSeries::SBody::FollowFork() {
    CheckStop();
    if (owner == ::getpid()) return;
    if (!measurement.Source().IsNumbered())
        throw CError({.id = EError::Interrupted,
                      .file = measurement.Source().Name(),
                      .problem = "the frames of a stream go to the process that began to read it"});
    End();
    Start(next);
}

void CSeries::SBody::CheckStop() const {
    if (options.stop.stop_requested())
        throw CError({.id = EError::Interrupted, .problem = "the measuring was ended on request"});
}

void CSeries::SBody::Keep(const SPortion& portion) {
    const std::size_t room = kMostFaults - faults.size();
    faults.insert(faults.end(), portion.faults.begin(),
                  portion.faults.begin() + static_cast<std::ptrdiff_t>(std::min(room, portion.faults.size())));
    faultCount += portion.faultCount;
}

/// Whether there is a frame to be handed over. Throws what ends the run.
bool CSeries::SBody::Judge(SSlot& taken) {
    const bool stops = options.onFault == EOnFault::Stop;
    if (stops && taken.portion.faultCount) throw CError(taken.portion.faults.front());
    Keep(taken.portion);
    if (taken.thrown) std::rethrow_exception(taken.thrown);
    if (!taken.fault) return taken.portion.measurable;
    try {
        std::rethrow_exception(taken.fault);
    } catch (const CError& error) {
        if (stops || !IsOfFrame(error)) throw;
        if (faults.size() < kMostFaults) faults.push_back(error);
        ++faultCount;
    }
    if (options.onFault == EOnFault::Skip) return false;
    Fill(taken);
    return true;
}

void CSeries::SBody::Fill(SSlot& taken) const {
    CFrame& frame = taken.frame;
    const SFrameFormat& format = measurement.Source().Format();
    frame = CFrame();
    frame.number = taken.portion.number;
    frame.width = format.width;
    frame.height = format.height;
    frame.unit = measurement.Unit().value_or(Counts);
    frame.scale = measurement.Options().scale;
    for (std::size_t i = 0; i < taken.portion.count && taken.portion.cycle; ++i)
        frame.merged.push_back(taken.portion.raws[i].number);
    frame.values.assign(format.PixelCount(), std::numeric_limits<float>::quiet_NaN());
    frame.status.assign(format.PixelCount(), kNoData);
    if (map) map(frame, engine->Current());
}

}  // namespace ovix::measure
