#pragma once

#include <array>
#include <optional>
#include <vector>

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// What is in a source, gathered frame by frame from the metadata; memory does not grow with their number.
class CSourceReport {
  public:
    /// `userCalibration`, if given, takes the place of the source's. The source is borrowed.
    explicit CSourceReport(const measure::CSource& source, const std::optional<CRCalFile>& userCalibration = {});

    /// Takes in one frame. Throws `CError` with file and frame for one that would not do.
    void Add(measure::SRawFrame& raw);
    /// All that is known by now.
    Json Document();
    reduce::CReduceObjectArray& Objects() { return objects_; }
    /// The named values of the frame taken in last, whose bytes these are: a list of name, value, unit, and the kind
    /// and the type by which the camera's decoder calls it.
    Json FrameValues(std::vector<u8> frame);

  private:
    struct STimes {
        measure::Time first;
        measure::Time last;
    };
    /// A jump of the frame counter.
    struct SGap {
        u64 afterFrame = 0;
        u64 from = 0;
        u64 to = 0;
        u64 missing = 0;  ///< counter values between the two; 0 for a repeated one
    };
    struct SCounters {
        u64 first;
        u64 last;
    };
    static constexpr std::size_t kMostGaps = 100;

    void AddCounter(u64 frame, u64 counter);
    Json TimeJson() const;
    Json CounterJson() const;
    Json PresetsJson() const;
    Json CalibrationsJson() const;

    const measure::CSource& source_;
    measure::CFrameReader reader_;
    const std::optional<CRCalFile>& userCalibration_;
    reduce::CReduceObjectArray objects_;
    u64 frames_ = 0;
    u64 lastFrame_ = 0;
    u8 preset_ = 0;
    bool carriesTime_ = false;  ///< as `carriesCounter_`, of the frame taken in last
    bool carriesCounter_ = false;
    std::array<u64, 256> framesOfPreset_{};
    std::optional<STimes> times_;
    std::optional<SCounters> counters_;
    u64 counterSpan_ = 0;  ///< how many values the counter takes before it starts anew; 0 for all of 64 bits
    u64 gapCount_ = 0;
    u64 missing_ = 0;
    std::vector<SGap> gaps_;  ///< the first of them
};

}  // namespace ovix::app
