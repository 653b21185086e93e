#pragma once

namespace ovix::reduce {

/// What weakens an object's signal on its way into the camera: each number is the part that is left, 0 to 1.
struct SOpticalPath {
    double emissivity;
    double air;
    double optics;  ///< external ones, before the lens

    /// What a camera sees beside the object, as an object signal: reflected surroundings, the glow of the air and that
    /// of the optics, each given by the object signal of its temperature. Where nothing of the object comes through,
    /// what stands further on is left out; so are optics that are wholly transparent.
    double Surroundings(double reflectedSignal, double airSignal, double opticsSignal) const {
        const double e = emissivity, t = air, x = optics;
        if (!(e > 0)) return 0;
        const double reflected = (1 - e) / e * reflectedSignal;
        if (!(t > 0)) return reflected;
        const double withAir = (1 - t) / (t * e) * airSignal + reflected;
        if (!(x > 0) || x >= 1.0) return withAir;
        return withAir + (1 - x) / (x * t * e) * opticsSignal;
    }
};

}  // namespace ovix::reduce
