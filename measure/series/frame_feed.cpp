#include "measure/series/frame_feed.h"

#include "measure/text.h"

namespace ovix::measure {

bool IsOfFrame(const CError& error) {
    const EError id = error.Id();
    if (id >= EError::FrameCut && id < EError::NoCalibration) return true;
    return error.Facts().frame && id >= EError::FileMissing && id < EError::HelperMissing;
}

CFrameFeed::CFrameFeed(const CMeasurement& measurement, const SSeriesOptions& options, u64 from)
    : measurement_(measurement),
      frames_(options.frames),
      numbered_(measurement.Source().IsNumbered()),
      merges_(options.mergePresets),
      stops_(options.onFault == EOnFault::Stop),
      place_(from) {
    if (numbered_ && !frames_) frames_ = CFrameNumbers::All(measurement.Source().Count().value_or(0));
}

bool CFrameFeed::Next(SPortion& portion, const std::stop_token& stop) {
    stop_ = stop;
    portion.count = 0;
    portion.faults.clear();
    portion.faultCount = 0;
    portion.measurable = false;
    portion.cycle = merges_;
    if (merges_) return NextCycle(portion);
    if (!numbered_) return NextFollowing(portion);
    if (place_ == frames_->Count()) return false;
    portion.number = (*frames_)[place_++];
    portion.next = place_;
    return portion.measurable = true;
}

bool CFrameFeed::NextFollowing(SPortion& portion) {
    try {
        SRawFrame& raw = portion.Add();
        if (!ReadFollowing(raw)) return false;
        portion.number = raw.number;
        portion.measurable = true;
    } catch (const CError& error) {
        Keep(error, portion);
    }
    return true;
}

bool CFrameFeed::NextCycle(SPortion& portion) {
    std::bitset<256> presets;
    if (ahead_) {
        presets.set(aheadPreset_);
        std::swap(portion.Add(), *ahead_);
        ahead_.reset();
    }
    try {
        while (ContinueCycle(portion, presets)) {
        }
    } catch (const CError& error) {
        // The cycle is not whole: the frames before it are the last.
        portion.count = 0;
        portion.faults.assign(1, error);
        portion.faultCount = 1;
    }
    portion.measurable = portion.count > 0;
    if (portion.measurable) portion.number = portion.raws.front().number;
    return portion.measurable || portion.faultCount;
}

/// Adds a frame to the cycle; false when there is none that belongs to it. Throws a fault only where that is the end.
bool CFrameFeed::ContinueCycle(SPortion& portion, std::bitset<256>& presets) {
    portion.next = place_;
    SRawFrame& raw = portion.Add();
    try {
        const bool more = ReadNext(raw);
        const u8 preset = more ? measurement_.PresetOf(raw) : u8{0};
        if (more && !presets.test(preset)) {
            presets.set(preset);
            return true;
        }
        --portion.count;
        if (!more) return false;
        aheadPreset_ = preset;
        std::swap(ahead_.emplace(), raw);
        return false;
    } catch (const CError& error) {
        --portion.count;
        Keep(error, portion);
        if (stops_) throw;
        return true;
    }
}

void CFrameFeed::Keep(const CError& error, SPortion& portion) const {
    // What a source that is not numbered says otherwise, it would say for ever.
    const bool passes = numbered_ || (error.Id() >= EError::FrameCut && error.Id() < EError::NoCalibration);
    if (!IsOfFrame(error) || !passes) throw CError(error);
    ++portion.faultCount;
    if (portion.faults.size() < kMostFaults) portion.faults.push_back(error);
}

bool CFrameFeed::ReadNext(SRawFrame& raw) { return numbered_ ? ReadNumbered(raw) : ReadFollowing(raw); }

bool CFrameFeed::ReadNumbered(SRawFrame& raw) {
    if (place_ == frames_->Count()) return false;
    measurement_.Source().Read((*frames_)[place_++], raw);
    return true;
}

bool CFrameFeed::ReadFollowing(SRawFrame& raw) {
    if (!frames_) return measurement_.Source().Next(raw, stop_);
    if (place_ == frames_->Count()) return false;
    const u64 wanted = (*frames_)[place_];
    if (wanted < following_)
        throw CError({.id = EError::NotNumbered,
                      .file = measurement_.Source().Name(),
                      .problem = Say("frame ", wanted, " has passed by: its frames come one after the other")});
    do {
        if (!measurement_.Source().Next(raw, stop_)) return false;
        following_ = raw.number + 1;
    } while (raw.number < wanted);
    // A frame that was passed over in a torn place is not there.
    while (place_ < frames_->Count() && (*frames_)[place_] < raw.number) ++place_;
    if (place_ < frames_->Count() && (*frames_)[place_] == raw.number) {
        ++place_;
        return true;
    }
    return ReadFollowing(raw);
}

}  // namespace ovix::measure
