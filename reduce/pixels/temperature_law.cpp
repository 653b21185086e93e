#include "reduce/pixels/temperature_law.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "core/temperature_scale.h"
#include "reduce/pixels/formulas.h"
#include "reduce/pixels/simd/model_simd.h"
#include "reduce/pixels/temperature.h"

namespace ovix::reduce {

namespace {

/// 2hc^2 in W um^4 / (cm^2 sr) and hc / k in um K; the band integral `Radiance` has slightly others, on purpose.
constexpr double kC1 = 11910.66;
constexpr double kC2 = 14388.3;
/// The logarithm of the three-parameter fit is never taken of less than this.
constexpr double kLeastLog = 1.0002;

template <class F>
u32 Each(const double* from, u32 count, double* to, const F& f) {
    std::transform(from, from + count, to, f);
    return count;
}

template <class Sum>
double PowerSum(const SPolynomialModel& model, double x) {
    Sum sum = 0;
    for (i32 k = 0; k <= model.order; ++k) sum += static_cast<Sum>(model.coefficients[k] * std::pow(x, k));
    return static_cast<double>(sum);
}

/// The sum of one order, written out.
template <i32 Order>
u32 Products(const double* coefficients, double scale, const double* radiances, u32 count, double* out) {
    std::array<double, Order + 1> a;
    std::copy_n(coefficients, a.size(), a.begin());
    return Each(radiances, count, out, [=](double r) {
        const double x = r / scale;
        double power = x, sum = a[0] + a[1] * x;
        for (u32 k = 2; k <= Order; ++k) {
            power *= x;
            sum += a[k] * power;
        }
        return sum;
    });
}

template <i32... Below>
u32 WriteOut(std::integer_sequence<i32, Below...>, const SPolynomialModel& model, double scale, const double* radiances,
             u32 count, double* out) {
    u32 done = 0;
    ((model.order == Below + 1 && (done = Products<Below + 1>(model.coefficients, scale, radiances, count, out))) ||
     ...);
    return done;
}

// Each model on a block; the answer is the number of values done.

u32 Apply(const SPolynomialModel& model, double scale, const double* radiances, u32 count, double* out) {
    if (model.powerAlways || model.order < 1 || model.order > 6) {
        if (model.singleSum)
            return Each(radiances, count, out, [&](double r) { return PowerSum<float>(model, r / scale); });
        return Each(radiances, count, out, [&](double r) { return PowerSum<double>(model, r / scale); });
    }
    return WriteOut(std::make_integer_sequence<i32, 6>(), model, scale, radiances, count, out);
}

u32 Apply(const STableModel& model, double scale, const double* radiances, u32 count, double* out) {
    if (model.size < 2) {
        std::fill_n(out, model.clamp ? count : 0, 0.0);
        return model.clamp ? count : 0;
    }
    u32 near = 1;
    for (u32 i = 0; i < count; ++i) {
        const STableValue found =
            Interpolate(model.radiances, model.temperatures, model.size, radiances[i] / scale, near);
        if (!found.inside && !model.clamp) return i;
        out[i] = found.value;
    }
    return count;
}

/// A logarithm's argument for each radiance, and what becomes of the logarithm.
struct SLogForm {
    simd::SLogQuotient kelvin;
    double x[kRunBlock];
};

/// Here the scale multiplies the numerator.
void Arguments(const SPlanckModel& model, double scale, const double* radiances, u32 count, SLogForm& form) {
    const double width = model.highWave - model.lowWave;
    const double w = width * 0.5 + model.lowWave;
    const double w5 = w * w * w * w * w;
    const double numerator = width * kC1 * scale;
    form.kelvin.numerator = kC2;
    form.kelvin.width = w;
    Each(radiances, count, form.x, [=](double r) { return numerator / (w5 * r) + 1.0; });
}

/// A radiance that is not above the offset is 0 K.
void Arguments(const SRBFModel& model, double scale, const double* radiances, u32 count, SLogForm& form) {
    const double limit = model.F <= 1.0 ? kLeastLog : model.F * kLeastLog;
    form.kelvin.numerator = model.B;
    form.kelvin.width = 1.0;
    Each(radiances, count, form.x, [=](double r) {
        const double d = r / scale - model.O;
        const double w = model.R / d + model.F;
        return !(d > 0) ? std::numeric_limits<double>::infinity() : limit > w ? limit : w;
    });
}

/// Of the models that yield kelvin. An unknown scale means Celsius.
template <class Model>
void MakeLogForm(const Model& model, double scale, ETempType type, const double* radiances, u32 count, SLogForm& form) {
    const STemperatureScale to = TemperatureScale(TemperatureScale(type).known ? type : Celsius);
    form.kelvin.factor = to.factor;
    form.kelvin.offset = to.offset;
    Arguments(model, scale, radiances, count, form);
}

template <class Model>
constexpr bool kTakesLogarithm = std::is_same_v<Model, SPlanckModel> || std::is_same_v<Model, SRBFModel>;

}  // namespace

void FromCelsius(double* temperatures, u32 count, ETempType type) {
    const STemperatureScale to = TemperatureScale(type);
    if (type != Celsius && to.known)
        Each(temperatures, count, temperatures, [=](double c) { return to.FromCelsius(c); });
}

STemperatureLaw RecordLaw(const STemperatureParams& params, bool tableAllowed, const SCommonParams& common) {
    STemperatureLaw law{SPlanckModel{common.highWave, common.lowWave}, common.signalScale, common.tempType};
    if (tableAllowed && params.radiances && params.temperatures && params.tableSize >= 2) {
        law.model = STableModel{params.radiances, params.temperatures, static_cast<u32>(params.tableSize), true};
    } else if (params.coefficients && params.order > 0) {
        law.model = SPolynomialModel{params.coefficients, params.order};
    }
    return law;
}

u32 ApplyLaw(const STemperatureLaw& law, const double* radiances, u32 count, double* temperatures) {
    return std::visit(
        [&]<class Model>(const Model& model) {
            if constexpr (kTakesLogarithm<Model>) {
                SLogForm form;
                MakeLogForm(model, law.scale, law.type, radiances, count, form);
                return Each(form.x, count, temperatures, [&](double x) { return form.kelvin.Of(x); });
            } else {
                const u32 done = Apply(model, law.scale, radiances, count, temperatures);
                FromCelsius(temperatures, done, law.type);
                return done;
            }
        },
        law.model);
}

u32 StoreTemperatures(const STemperatureLaw& law, const double* radiances, u32 count, STypedData destination,
                      std::size_t at) {
    return std::visit(
        [&]<class Model>(const Model& model) {
            if constexpr (kTakesLogarithm<Model>) {
                if (destination.type == Flt32) {
                    SLogForm form;
                    MakeLogForm(model, law.scale, law.type, radiances, count, form);
                    simd::LogQuotients(form.kelvin, form.x, static_cast<float*>(destination.data) + at, count);
                    return count;
                }
            }
            double temperatures[kRunBlock];
            const u32 done = ApplyLaw(law, radiances, count, temperatures);
            StoreBlock(destination, at, temperatures, done);
            return done;
        },
        law.model);
}

/// The temperature of one radiance.
static double Apply(const STemperatureLaw& law, double radiance) {
    double temperature = 0;
    ApplyLaw(law, &radiance, 1, &temperature);
    return temperature;
}

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
