#pragma once

#include <bitset>
#include <optional>
#include <vector>

#include "measure/series/series.h"

namespace ovix::measure {

/// What is to be measured next: one frame, or those of a cycle of presets.
struct SPortion {
    u64 number = 0;               ///< of the first frame
    u64 next = 0;                 ///< place in the choice from which to go on behind it
    std::vector<SRawFrame> raws;  ///< those that were read already; memory stays from one portion to the next
    std::size_t count = 0;        ///< of them; 0 for a numbered frame that is yet to be read
    bool cycle = false;           ///< they make one
    std::vector<CError> faults;   ///< of frames that were met on the way and are no part of it, the first thousand
    u64 faultCount = 0;           ///< of all of them
    bool measurable = false;      ///< false for a portion of faults alone

    SRawFrame& Add() {
        if (count == raws.size()) raws.emplace_back();
        return raws[count++];
    }
};

/// Takes the frames of a source in their order, one portion after the other. One thread at a time.
class CFrameFeed {
  public:
    /// From place `from` of the choice on. The measurement is borrowed.
    CFrameFeed(const CMeasurement& measurement, const SSeriesOptions& options, u64 from);

    /// False at the end. `stop` ends the waiting for a source that is not numbered. Throws `CError` for what is no
    /// fault of one frame.
    bool Next(SPortion& portion, const std::stop_token& stop);

  private:
    bool NextFollowing(SPortion& portion);
    bool NextCycle(SPortion& portion);
    bool ContinueCycle(SPortion& portion, std::bitset<256>& presets);
    void Keep(const CError& error, SPortion& portion) const;
    bool ReadNext(SRawFrame& raw);
    bool ReadNumbered(SRawFrame& raw);
    bool ReadFollowing(SRawFrame& raw);

    const CMeasurement& measurement_;
    std::optional<CFrameNumbers> frames_;
    std::stop_token stop_;
    bool numbered_;
    bool merges_;
    bool stops_;
    u64 place_;                       ///< in the choice
    u64 following_ = 0;               ///< the least number that may still come from a source that is not numbered
    std::optional<SRawFrame> ahead_;  ///< begins the next cycle
    u64 aheadPlace_ = 0;
    u8 aheadPreset_ = 0;
};

inline constexpr std::size_t kMostFaults = 1000;

/// Whether it is the fault of one frame, and others may do.
bool IsOfFrame(const CError& error);

}  // namespace ovix::measure
