#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/frame/options.h"
#include "measure/frame/region.h"
#include "measure/sources/source.h"
#include "measure/time.h"

namespace ovix::measure {

/// A value that went into a measurement, with its unit and who said it.
struct SParameter {
    std::string key;   ///< stays from version to version: "reflected-temp"
    std::string name;  ///< for a reader: "reflected temperature"
    std::string unit;  ///< "K"; empty for none
    double value = 0;
    EOrigin origin = EOrigin::Default;
};

/// One measured frame. It owns its pixels, and is reused by the next measurement that is asked to write into it, so a
/// loop takes no memory.
class OVIX_MEASURE_API CFrame {
  public:
    CFrame();
    CFrame(CFrame&&) noexcept;
    CFrame& operator=(CFrame&&) noexcept;
    ~CFrame();

    u64 number = 0;  ///< in its source, from 0
    u16 width = 0;   ///< pixels
    u16 height = 0;
    EUnit unit = Counts;
    ETempType scale = Celsius;
    std::optional<Time> time;       ///< nothing when the frame carries none
    bool yearAssumed = false;       ///< the frame says day and time of day alone; the year is that of the host's clock
    std::optional<u64> counter;     ///< of the camera, likewise
    std::optional<u8> preset;       ///< likewise; the calibration of preset 0 serves then
    std::vector<u64> merged;        ///< the frames of which this one is made, where they were merged
    std::vector<u8> mergedPresets;  ///< and their presets
    std::vector<float> values;      ///< width times height in rows from the top, in the unit
    std::vector<u8> status;         ///< one byte a pixel; its bits are those of the library's converters

    /// Figures of the pixels of a region, of those whose status lets them count; of the whole frame when it has no
    /// width. Throws `CError` (WrongArgument) for one that is not within the frame.
    SRegionStats Statistics(const SRegion& region = {}) const;
    /// All that is known of the frame: what its source says and its own metadata. Valid until the frame is measured
    /// into again. To be looked at: what is shared with other frames stands in it, too.
    reduce::CReduceObjectArray& Objects() const;
    /// The scene values that the conversion used; none where the unit does not depend on a scene.
    std::vector<SParameter> Parameters() const;

    struct SWork;  ///< memory of a measurement: what works on a frame belongs to one thread
    std::unique_ptr<SWork> work;
};

/// Memory of the caller's for width times height values and as many status bytes, null where they are not wanted.
struct SPixelRoom {
    float* values = nullptr;
    u8* status = nullptr;
};

/// The way of the frames of a source to a unit: read, check, decode, correct, convert.
///
/// Immutable and shared: every thread may measure with the same one, each into a frame of its own, copies are one
/// measurement, and tables are held once. A frame is measured from what its source says and from its own bytes, never
/// from what an earlier frame left behind, so the order of the frames and the number of threads do not change a bit.
///
/// It may be used on both sides of a `fork`, by a child that was forked off while threads measured, too.
class OVIX_MEASURE_API CMeasurement {
  public:
    /// Loads the correction tables and chooses the unit by the metadata of the first frame of a numbered source that
    /// will do, by the first frame measured of others (a series sees to it that that is the first in order). Throws
    /// `CError` (UnitNotOffered with those on offer, CorrectionUnusable, NoCalibration; that of the first frame when
    /// none will do).
    CMeasurement(CSource source, SMeasureOptions options);

    const CSource& Source() const;
    const SMeasureOptions& Options() const;
    /// Nothing before the first good frame of a source that is not numbered.
    std::optional<EUnit> Unit() const;
    /// Whether counts are corrected, with tables of the options or of the source.
    bool Corrects() const;
    /// What the source can give; nothing before that frame.
    std::vector<EUnit> Offered() const;

    /// Measures a frame. Throws `CError` with file and frame for one that will not do; others can still be measured.
    void Measure(u64 number, CFrame& frame) const;
    CFrame Measure(u64 number) const;
    /// The same with the pixels in the caller's memory instead of in the frame, which keeps none then.
    void Measure(u64 number, CFrame& frame, const SPixelRoom& room) const;
    /// The same for bytes that were read already. Some families repair a frame where it stands, so its bytes may
    /// change.
    void Measure(SRawFrame& raw, CFrame& frame) const;
    /// The frames of different presets that make one: merged by the abatement settings of the source, the defaults
    /// where it has none, before they are converted. The first one's number and time are those of the result.
    void MeasureMerged(std::span<SRawFrame> raws, CFrame& frame) const;
    /// The preset of a frame, from its metadata alone.
    u8 PresetOf(SRawFrame& raw) const;

  private:
    struct SBody;
    std::shared_ptr<const SBody> body_;
};

/// "temperature (factory)": a quantity, and the calibration where there are several ways to it.
OVIX_MEASURE_API std::string UnitWords(EUnit unit);

/// A unit on offer of the quantity, by that calibration or by the factory's before the user's.
OVIX_MEASURE_API std::optional<EUnit> FindUnit(std::span<const EUnit> offered, EQuantity quantity,
                                               std::optional<ECalibration> calibration);

}  // namespace ovix::measure
