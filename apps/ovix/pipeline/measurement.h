#pragma once

#include <optional>
#include <span>
#include <vector>

#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/json.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "apps/ovix/pipeline/measure_options.h"
#include "apps/ovix/units.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// One frame in the wanted unit, width times height values. They hold until the next frame is measured.
struct SMeasuredFrame {
    u64 number = 0;  ///< in its source
    std::span<const float> values;
    std::span<const u8> status;
};

/// The way of the frames of a source to a unit: read, check, decode, correct, convert. One frame is in memory at a
/// time.
class CMeasurement {
  public:
    /// Loads the correction tables. The source is borrowed.
    CMeasurement(IFrameSource& source, SMeasureOptions options);

    /// Throws `CFault` with file and frame for one that would not do; others can still be measured. The unit is chosen
    /// at the first good frame, since the calibration comes with the frames; one that the source cannot give is a fault
    /// of the source, without a frame.
    SMeasuredFrame Measure(u64 number);

    /// Of the first good frame on.
    EUnit Unit() const { return unit_; }
    SUnitText UnitText() const { return app::UnitText(unit_, options_.scale); }
    /// The units on offer for the frame measured last, its preset, and all that is known of it.
    TArray<EUnit> Units() const;
    u8 Preset() const { return preset_; }
    reduce::CReduceObjectArray& Objects() { return objects_; }
    /// All that the values of the frame measured last rest on, each with its unit in its key.
    Json Parameters();
    /// That of the frame measured last; nothing when it carries none.
    std::optional<CDateTime> Time() const { return time_; }

  private:
    void DecodeFrame(u64 number);
    EUnit ChooseOfferedUnit() const;
    void UpdateContext();
    bool IsUserUnit() const { return Unit() == RadianceUser || Unit() == TemperatureUser; }
    void RequireUserPreset();
    u32 CalibrationMark();
    void ConvertPixels();

    IFrameSource& source_;
    SMeasureOptions options_;
    CGuardedDecode decode_;
    reduce::CReduceObjectArray objects_;
    reduce::CConvertContext context_;
    EUnit unit_ = Counts;
    bool unitChosen_ = false;
    bool ready_ = false;  ///< the context fits the calibration of `mark_` and `readyPreset_`
    u32 mark_ = 0;
    u8 preset_ = 0;  ///< of the frame measured last
    u8 readyPreset_ = 0;
    std::optional<CDateTime> time_;
    std::vector<u8> frame_;
    std::vector<float> corrected_;
    std::vector<float> values_;
    std::vector<u8> status_;
};

}  // namespace ovix::app
