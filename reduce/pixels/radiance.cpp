#include "reduce/pixels/radiance.h"

#include <cmath>
#include <cstring>

#include "core/typed_data.h"
#include "core/visit.h"
#include "reduce/pixels/formulas.h"
#include "reduce/pixels/radiance_law.h"

namespace ovix::reduce {

namespace {

/// Micrometres between two samples of the band.
constexpr double kStep = 0.01;
/// 2hc^2 in W um^4 / (cm^2 sr) and hc / k in um K. The inverse of Planck's law elsewhere has slightly other constants,
/// on purpose: calibrations were made with either pair.
constexpr double kC1 = 11910.7;
constexpr double kC2 = 14388.4;

double SnapToStep(double wave) { return static_cast<double>(TruncateTo<i64>(wave / kStep)) * kStep; }

double SpectralRadiance(double wave, double kelvin) {
    const double wave5 = wave * wave * wave * wave * wave;
    return kC1 / ((std::exp(kC2 / (wave * kelvin)) - 1) * wave5);
}

}  // namespace

double Radiance(double temperatureC, double lowWave, double highWave, double scale) {
    const double kelvin = temperatureC + 273.15;
    const double low = SnapToStep(lowWave);
    const i32 steps = TruncateTo<i32>(std::ceil((SnapToStep(highWave) - low) / kStep));
    double sum = 0;
    double previous = 0;
    for (i32 i = 0; i <= steps; ++i) {
        const double current = SpectralRadiance(i * kStep + low, kelvin) * scale;
        if (i > 0) sum += (previous + current) * 0.5 * kStep;
        previous = current;
    }
    return sum;
}

double ToRadiance(double counts, const double* coefficients, int order, double background, double scale) {
    double radiance = 0;
    SCounts one;
    one.Load({&counts, Flt64}, 1, EPowers::Double);
    ApplyLaw({coefficients, order, background, scale}, one, nullptr, &radiance);
    return radiance;
}

bool CountsToRadiance(u16 first, u16 last, float* out, u8* status, bool check, double warnLow, double warnHigh,
                      double clipLow, double clipHigh, const double* coefficients, int order, double background,
                      double scale) {
    if (last < first) return true;
    const u32 total = u32{last} - first + 1;
    if (status) std::memset(status, 0, total);
    SRadianceLaw law{coefficients, order, background, scale};
    if (check) law.limits = {warnLow, warnHigh, clipLow, clipHigh};
    SCounts counts;
    u16 block[kRunBlock];
    double radiances[kRunBlock];
    for (u32 at = 0; at < total; at += counts.count) {
        const u32 count = std::min(kRunBlock, total - at);
        for (u32 i = 0; i < count; ++i) block[i] = static_cast<u16>(first + at + i);
        counts.Load({block, UInt16}, count, EPowers::Wrapping);
        if (!ApplyLaw(law, counts, nullptr, radiances)) break;
        StoreRadiances({out, Flt32}, status, at, radiances, count, law.limits);
    }
    return true;
}

bool ToRadianceLookup(double& radiance, double temperature, const double* radiances, const double* temperatures,
                      i32 count, bool clampResult, double scale, ETempType type) {
    if (count < 2) return false;
    const STableValue found = Interpolate(temperatures, radiances, static_cast<u32>(count),
                                          CMath::ConvertTemperature(temperature, type, Celsius));
    radiance = found.value * scale;
    return found.inside || clampResult;
}

}  // namespace ovix::reduce
