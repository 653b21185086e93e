#pragma once

#include <vector>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// What the camera gave when it looked at a black body of known temperature.
struct SCalibrationPoint {
    double counts = 0;
    double celsius = 0;
    u8 preset = 0;
};

/// How radiance becomes temperature.
enum class ETemperatureModel { Table, Polynomial, Planck };

struct SFitOptions {
    double lowWave = 0;  ///< of the band, micrometres
    double highWave = 0;
    int order = 2;  ///< of the polynomial from counts to radiance, 1 to 9
    ETemperatureModel model = ETemperatureModel::Table;
    int temperatureOrder = 5;  ///< 1 to 9, of the polynomial from radiance to temperature, where that is the model
};

/// A point and what the fitted calibration makes of it. Radiances in W/(cm² sr).
struct OVIX_MEASURE_API SFittedPoint {
    SCalibrationPoint point;
    double radiance = 0;  ///< of the black body
    double fitted = 0;    ///< of its counts
    double celsius = 0;   ///< of its counts

    /// In kelvin; NaN where Planck's law finds none.
    double Residual() const;
};

/// One preset with its points, in the order of their counts.
struct SPresetFit {
    u8 preset = 0;
    std::vector<SFittedPoint> points;
    bool steady = true;  ///< the fitted radiance rises, or falls, all over the measured counts

    OVIX_MEASURE_API double Rms() const;  ///< of the residuals, kelvin
    OVIX_MEASURE_API double Largest() const;
};

struct SCalibrationFit {
    CRCalFile calibration;
    std::vector<SPresetFit> presets;
};

/// Fits each preset that has points: by least squares the radiance of the black bodies in the band over the counts, and
/// from it the way to temperature by Planck's law. Throws `CError`: FitUndetermined where the points do not determine
/// one, WrongArgument for a preset beyond 7, an order beyond 1 to 9, and a band that is none.
OVIX_MEASURE_API SCalibrationFit FitCalibration(std::vector<SCalibrationPoint> points, const SFitOptions& options);

}  // namespace ovix::measure
