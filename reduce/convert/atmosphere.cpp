#include "reduce/convert/atmosphere.h"

#include <algorithm>
#include <cmath>

namespace ovix::reduce {

double SAtmosphere::Transmission(double celsius, double distance, double rootOfDistance,
                                 double relativeHumidity) const {
    const double t = std::clamp(celsius, -30.0, 90.0);
    const double saturation = std::exp(t * 0.06939 + 1.5587 - t * t * 0.00027816 + t * t * 6.8455e-7 * t);
    double w = std::sqrt(saturation * relativeHumidity);
    if (w > 6.2365) w = 6.2365;
    const double a1 = w * beta1 + alpha1;
    const double a2 = w * beta2 + alpha2;
    const double e1 = std::exp(-a1 * rootOfDistance);
    const double e2 = std::exp(-a2 * rootOfDistance);

    const double tau = (1 - x) * e2 + e1 * x;
    if (tau < 0.4) return 0.4;
    if (tau > 1.0) {
        const double farAway = (1 - x) * std::exp(a2 * -1000.0) + x * std::exp(a1 * -1000.0);
        return farAway > 1.0 ? 0.4 : 1.0;
    }
    const double slope = -((1 - x) * a2 * e2 + a1 * x * e1);
    return slope > 0 && distance > 0 ? 0.4 : tau;
}

}  // namespace ovix::reduce
