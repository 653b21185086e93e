#pragma once

#include <array>
#include <optional>
#include <vector>

#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/json.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "core/core.h"

namespace ovix::app {

/// What is in a source, gathered frame by frame from the metadata; memory does not grow with their number.
class CSourceReport {
  public:
    /// `userCalibration`, if given, takes the place of the source's.
    explicit CSourceReport(IFrameSource& source, const std::optional<CRCalFile>& userCalibration = {});

    /// Takes in one frame: the first one's metadata whole, of the others no more than preset, counter and time. Throws
    /// `CFault` with file and frame for one that would not do.
    void Add(u64 frame);
    /// All that is known by now.
    Json Document();
    reduce::CReduceObjectArray& Objects() { return objects_; }
    /// The named values of the frame taken in last: a list of name, value, unit and type.
    Json FrameValues();

  private:
    struct STimes {
        CDateTime first;
        CDateTime last;
    };
    /// What a scan of the frames looks at.
    struct SBasics {
        u8 preset = 0;
        u64 counter = 0;
        std::optional<CDateTime> time;  ///< nothing when the frame carries none

        bool operator==(const SBasics&) const = default;
    };
    /// A jump of the frame counter.
    struct SGap {
        u64 afterFrame = 0;
        u64 from = 0;
        u64 to = 0;
        u64 missing = 0;  ///< counter values between the two; 0 for a repeated one
    };
    static constexpr std::size_t kMostGaps = 100;

    SBasics ParseWhole();
    SBasics ParseBasics();
    void AddCounter(u64 frame, u64 counter);
    Json TimeJson() const;
    Json CounterJson() const;
    Json PresetsJson() const;
    Json CalibrationsJson() const;
    Json UserCalJson();

    IFrameSource& source_;
    CGuardedDecode decode_;
    reduce::CReduceObjectArray objects_;
    std::vector<u8> frame_;
    u64 frames_ = 0;
    u64 lastFrame_ = 0;
    u8 preset_ = 0;
    bool scans_ = false;  ///< the decoder's quick look at a frame answers as the whole parsing does
    std::array<u64, 256> framesOfPreset_{};
    std::optional<STimes> times_;
    bool counts_ = false;  ///< frames of this type carry a counter
    u64 counterSpan_ = 0;  ///< how many values the counter takes before it starts anew; 0 for all of 64 bits
    u64 firstCounter_ = 0;
    u64 lastCounter_ = 0;
    u64 gapCount_ = 0;
    u64 missing_ = 0;
    std::vector<SGap> gaps_;  ///< the first of them
};

}  // namespace ovix::app
