#pragma once

namespace ovix::reduce {

/// How a count of the Tern family becomes pow, and back: first the camera's own warmth is taken out, then gain and
/// offset of the detector are applied.
struct STernDetector {
    bool compensates = false;
    double driftGain = 1.0;
    double driftOffset = 0.0;
    bool adjusts = false;
    double offset = 0.0;
    double gain = 0.0;

    double Pow(double count) const {
        const double v = compensates ? count * driftGain + driftOffset : count;
        return adjusts ? (v - offset) * gain : v;
    }
    double Count(double pow) const {
        const double v = adjusts ? pow / gain + offset : pow;
        return compensates ? (v - driftOffset) / driftGain : v;
    }
};

}  // namespace ovix::reduce
