#pragma once

#include <array>
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
/// time, or one for each preset.
class CMeasurement {
  public:
    /// Loads the correction tables. The source is borrowed.
    CMeasurement(IFrameSource& source, SMeasureOptions options);

    /// Throws `CFault` with file and frame for one that would not do; others can still be measured. The unit is chosen
    /// at the first good frame, since the calibration comes with the frames; one that the source cannot give is a fault
    /// of the source, without a frame.
    SMeasuredFrame Measure(u64 number);
    /// The same for the frames of different presets that make one: merged by the abatement settings of the source, the
    /// defaults where it has none, before they are converted. The first one's number and time are those of the result.
    SMeasuredFrame MeasureMerged(std::span<const u64> numbers);

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
    using Presets = std::array<bool, reduce::CConvertContext::PresetCount>;

    /// Runs a step that may throw a fault of that frame.
    template <class Step>
    void OfFrame(u64 number, Step step);
    void DecodeFrame(u64 number);
    void EnablePreset();
    void ChooseUnitOnce();
    EUnit ChooseOfferedUnit() const;
    void UpdateContext();
    bool IsUserUnit() const { return Unit() == RadianceUser || Unit() == TemperatureUser; }
    void RequireUserPresets();
    u32 CalibrationMark();
    void ConvertPixels();
    void ConvertMerged();

    IFrameSource& source_;
    SMeasureOptions options_;
    CGuardedDecode decode_;
    reduce::CReduceObjectArray objects_;
    reduce::CConvertContext context_;
    EUnit unit_ = Counts;
    bool unitChosen_ = false;
    bool ready_ = false;  ///< the context fits the calibration of `mark_` and `readyPresets_`
    u32 mark_ = 0;
    u8 preset_ = 0;         ///< of the frame measured last
    Presets presets_ = {};  ///< of all frames that are measured together
    Presets readyPresets_ = {};
    std::optional<CDateTime> time_;
    std::vector<u8> frame_;
    std::vector<float> corrected_;
    std::vector<float> values_;
    std::vector<u8> status_;
    std::vector<float> counts_[reduce::CConvertContext::PresetCount];  ///< of each preset to be merged
    std::vector<float> merged_;
    std::vector<u8> presetMap_;
};

}  // namespace ovix::app
