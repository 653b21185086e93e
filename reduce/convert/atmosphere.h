#pragma once

namespace ovix::reduce {

/// The attenuation of the air path in two exponential terms of the square root of the distance, each with a part for
/// dry air and one for its water content.
struct SAtmosphere {
    double alpha1, alpha2;  ///< without water
    double beta1, beta2;    ///< per water content
    double x;               ///< weight of the first term

    /// The transmission, 0.4 to 1, of a path of `distance` with the given square root, through air of `celsius`
    /// (limited to -30 to 90) and a relative humidity from 0 to 1. Each family takes temperature and root in its own
    /// precision. Constants that would let the transmission rise with the distance give 0.4.
    double Transmission(double celsius, double distance, double rootOfDistance, double relativeHumidity) const;
};

/// The atmosphere of a calibration that has its constants under these names.
template <class Calib>
SAtmosphere AtmosphereOf(const Calib& calib) {
    return {calib.atmAlpha1, calib.atmAlpha2, calib.atmBeta1, calib.atmBeta2, calib.atmX};
}

}  // namespace ovix::reduce
