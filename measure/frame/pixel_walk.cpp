#include "measure/frame/pixel_walk.h"

#include "measure/frame/frame_work.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

class CWalk {
  public:
    CWalk(const CSource& source, const SRawFrame& raw, u32 pixel) : source_(source), raw_(raw), pixel_(pixel) {}

    /// Measures the frame in the quantity of the options, the user's or the factory's, and adds the step.
    CFrame Step(SMeasureOptions options, EQuantity quantity, std::vector<EUnit>* offered = nullptr) {
        options.quantity = quantity;
        const bool corrected = options.correct && quantity == EQuantity::Counts;
        const CMeasurement measurement(source_, std::move(options));
        CFrame frame;
        SRawFrame raw = raw_;  // decoders may write to it
        measurement.Measure(raw, frame);
        if (offered) *offered = measurement.Offered();
        walk.preset = frame.preset.value_or(0);
        walk.steps.push_back({frame.unit, corrected, frame.values[pixel_], frame.status[pixel_]});
        return frame;
    }

    SPixelWalk walk;

  private:
    const CSource& source_;
    const SRawFrame& raw_;
    u32 pixel_;
};

/// The scene of a frame that was measured in counts, where no conversion used it.
std::vector<SParameter> RecordedScene(const CFrame& frame) {
    const auto scene = frame.Objects().GetObjectParameters(true);
    return SceneParameters(*scene, frame.work->origins, nullptr, false);
}

}  // namespace

SPixelWalk WalkPixel(const CSource& source, const SMeasureOptions& options, const SRawFrame& raw, u32 pixel) {
    if (pixel >= source.Format().PixelCount())
        throw CError({.id = EError::WrongArgument,
                      .expected = Say("a pixel below ", source.Format().PixelCount()),
                      .found = Say(pixel)});
    CWalk walk(source, raw, pixel);
    SMeasureOptions bare = options;
    bare.correct = false;
    bare.corrections.clear();
    bare.clip.reset();
    std::vector<EUnit> offered;
    bare.calibration.reset();
    const CFrame counts = walk.Step(bare, EQuantity::Counts, &offered);
    walk.walk.scene = RecordedScene(counts);
    if (!options.corrections.empty()) walk.Step(options, EQuantity::Counts);

    if (options.quantity || options.calibration) ChooseUnit(offered, options);  // says what the source can give instead
    for (const EQuantity quantity : {EQuantity::Signal, EQuantity::Radiance, EQuantity::Temperature}) {
        if (options.quantity == EQuantity::Counts) break;
        const auto unit = FindUnit(offered, quantity, options.calibration);
        // A user calibration knows no object signal: that of the factory is no step on its way.
        const bool passes = quantity == EQuantity::Signal && options.calibration == ECalibration::User;
        if (unit && (!passes || options.quantity == quantity)) {
            const CFrame frame = walk.Step(options, quantity);
            const bool byUser = IsUserUnit(*unit);
            walk.walk.calibration = byUser ? UserCalibration(frame.Objects(), walk.walk.preset)
                                           : FactoryCalibration(frame.Objects(), walk.walk.preset);
            if (byUser && options.userCalibration) walk.walk.calibration.origin = EOrigin::Caller;
            walk.walk.scene = frame.Parameters();
        }
        if (options.quantity == quantity) break;
    }
    return std::move(walk.walk);
}

SPixelWalk WalkPixel(const CSource& source, const SMeasureOptions& options, u64 frame, u32 pixel) {
    SRawFrame raw;
    source.Read(frame, raw);
    return WalkPixel(source, options, raw, pixel);
}

}  // namespace ovix::measure
