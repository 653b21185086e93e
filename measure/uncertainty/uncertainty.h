#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "measure/frame/measurement.h"

namespace ovix::measure {

/// What is known of the inputs of a measurement, in the terms of JCGM 100 (the "GUM") and JCGM 101 (its Monte Carlo
/// supplement).
struct SUncertaintyOptions {
    /// Standard uncertainties in the units of the inputs, by key: "counts", those of the scene ("emissivity",
    /// "reflected-temp", ...) and the constants of the calibration ("planckB"). An input without one is taken as exact.
    std::map<std::string, double> standard = {};
    /// The same as shares of the values.
    std::map<std::string, double> relative = {};
    double coverage = 2;  ///< the factor k of the expanded uncertainty
    u64 trials = 0;       ///< of the Monte Carlo; 0 for none
    u64 seed = 1;
};

/// An input of the measurement, and what it contributes.
struct SUncertainInput {
    SParameter input = {};
    bool constant = false;    ///< of the calibration, not of the scene
    double u = 0;             ///< standard uncertainty; 0 for one that is taken as exact
    double sensitivity = 0;   ///< change of the value for one unit of the input: JCGM 100, 5.1.3
    double contribution = 0;  ///< |sensitivity| times u, in the unit of a difference of the value
    double share = 0;         ///< of the combined variance, 0 to 1
};

/// The distribution of the value when all inputs are drawn at random: JCGM 101, clause 7.
struct SMonteCarlo {
    u64 trials = 0;
    double mean = 0;
    double u = 0;    ///< standard deviation
    double low = 0;  ///< ends of the probabilistically symmetric interval of 95 %
    double high = 0;
    double tolerance = 0;  ///< of JCGM 101, 7.9.2, by two significant digits of the combined uncertainty
    bool agrees = false;   ///< the ends of the linear interval (k = 1.96) lie that close: JCGM 101, clause 8
};

struct SUncertainty {
    EUnit unit = Counts;
    ETempType scale = Celsius;
    double counts = 0;  ///< corrected, of which the value is
    double value = 0;
    std::vector<SUncertainInput> inputs = {};
    double combined = 0;  ///< standard uncertainty: JCGM 100, 5.1.2, inputs not correlated
    double coverage = 2;
    double expanded = 0;
    std::optional<SMonteCarlo> monteCarlo = {};
};

/// The uncertainty of the value that a conversion by the calibration and the scene of a measured frame gives for so
/// many counts. The frame's unit is radiance, signal or temperature.
///
/// Sensitivities are differences of the library's own conversion from x - u to x + u (from 0.5 % to either side where u
/// is 0), so they hold for the very numbers that it gives. That of the counts spans at least one count to either side,
/// for conversions know whole counts; a value between two counts is taken on the line between them. In the Monte Carlo
/// all inputs are normal; what lies outside of what an input can be (an emissivity above 1) is drawn again. The same
/// seed gives the same draws.
///
/// Throws `CError`: UnitNotOffered for counts, colours and an unknown calibration, WrongArgument for an uncertainty of
/// an input that there is not or that is no number above 0, and FrameRefused where the value lies outside of what is
/// calibrated.
OVIX_MEASURE_API SUncertainty EvaluateUncertainty(const CFrame& frame, double counts,
                                                  const SUncertaintyOptions& options);

}  // namespace ovix::measure
