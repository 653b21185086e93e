#include "reduce/pixels/temperature.h"

#include "reduce/pixels/table_lookup.h"
#include "reduce/pixels/temperature_law.h"

namespace ovix::reduce {

namespace {

double Apply(const STemperatureLaw& law, double radiance) {
    double temperature = 0;
    ApplyLaw(law, &radiance, 1, &temperature);
    return temperature;
}

}  // namespace

double ToTemperatureCoeffs(double radiance, const double* coefficients, i32 order, double scale, ETempType type) {
    double x = radiance / scale;
    double sum = coefficients[0];
    for (i32 k = 1; k <= order; ++k) {
        sum += coefficients[k] * x;
        x *= x;  // x, x^2, x^4, x^8: the single value's own series
    }
    FromCelsius(&sum, 1, type);
    return sum;
}

bool ToTemperatureLookup(double& temperature, double radiance, const double* radiances, const double* temperatures,
                         i32 tableSize, bool clampResult, double scale, ETempType type) {
    if (tableSize < 2) return false;
    const STableValue found = Interpolate(radiances, temperatures, static_cast<u32>(tableSize), radiance / scale);
    temperature = found.value;
    FromCelsius(&temperature, 1, type);
    return found.inside || clampResult;
}

double ToTemperaturePlanck(double radiance, double highWave, double lowWave, double scale, ETempType type) {
    return Apply({SPlanckModel{highWave, lowWave}, scale, type}, radiance);
}

double ToTemperatureRBF(double radiance, double R, double B, double F, double O, float, float, float, float,
                        double scale, ETempType type) {
    return Apply({SRBFModel{R, B, F, O}, scale, type}, radiance);
}

}  // namespace ovix::reduce
