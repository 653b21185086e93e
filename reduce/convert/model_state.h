#pragma once

/// What the measurement models keep of their calibration and scene: plain records. The arithmetic on them belongs to
/// the library, so that its results do not depend on how a program that includes this is compiled.
namespace ovix::reduce {

/// A Planck curve in three constants: R / (exp(B / T) - F) is the signal of a black body at T kelvin.
struct SPlanckCurve {
    double R = 0;
    double B = 0;  ///< kelvin
    double F = 0;
};

/// A parabola c[0] + c[1] * v + c[2] * v * v.
struct SParabola {
    double c[3] = {};
};

/// Radiance in a band of wavelengths against the object signal of a black body, as a parabola, and for families that
/// convert radiances back the parabola of the other way, fitted on the same points.
struct SRadianceFit {
    double lowWave = 0;  ///< the band, micrometres
    double highWave = 0;
    bool bothWays = false;
    bool valid = false;
    SPlanckCurve curve;  ///< what was fitted, where `valid`
    SParabola radiance;  ///< of object signal; all zeros before the first fit
    SParabola signal;    ///< of radiance
};

/// How a count of the Tern family becomes pow, and back: first the camera's own warmth is taken out, then gain and
/// offset of the detector are applied.
struct STernDetector {
    bool compensates = false;
    double driftGain = 1.0;
    double driftOffset = 0.0;
    bool adjusts = false;
    double offset = 0.0;
    double gain = 0.0;
};

}  // namespace ovix::reduce
