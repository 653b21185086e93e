#pragma once

#include <optional>
#include <variant>

#include "reduce/pixels/parts.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/temperature.h"

/// The four models of temperature.h over blocks of values, for kernels of all forms.
namespace ovix::reduce {

/// a[0] + a[1] x + a[2] x^2 and so on, degrees Celsius. Orders below 0 give 0.
struct SPolynomialModel {
    const double* coefficients;
    i32 order;
    /// Whether orders that take `pow` at each term, 0 and those above 6, are summed in single precision.
    bool singleSum = false;
    /// Whether the orders 1 to 6 take `pow` as well.
    bool powerAlways = false;
};

/// Degrees Celsius. Fewer than two entries give 0 where `clamp` is set.
struct STableModel {
    const double* radiances;
    const double* temperatures;
    u32 size;
    bool clamp;  ///< a value outside takes the nearer end; otherwise it has no temperature
};

/// Kelvin.
struct SPlanckModel {
    double highWave;
    double lowWave;
};

/// Kelvin.
struct SRBFModel {
    double R;
    double B;
    double F;
    double O;
};

/// How the radiances of one preset become temperature.
struct STemperatureLaw {
    std::variant<SPolynomialModel, STableModel, SPlanckModel, SRBFModel> model;
    double scale;
    ETempType type;
};

/// The law that a record chooses. `tableAllowed` false passes its table over.
STemperatureLaw RecordLaw(const STemperatureParams& params, bool tableAllowed, const SCommonParams& common);

/// The temperatures of a block of radiances, of at most `kRunBlock`. Answers how many were done: all, unless a value
/// has none. Both may be one array.
u32 ApplyLaw(const STemperatureLaw& law, const double* radiances, u32 count, double* temperatures);

/// The same narrowed, from element `at` of a destination of `Flt32` or `Flt64` on.
u32 StoreTemperatures(const STemperatureLaw& law, const double* radiances, u32 count, STypedData destination,
                      std::size_t at);

/// The final step of the models that yield degrees Celsius. An unknown scale stays Celsius.
void FromCelsius(double* temperatures, u32 count, ETempType type);

/// A selection of radiances to temperature. `lawOf(preset)` answers the preset's `STemperatureLaw`, or nothing for one
/// without. False where a pixel has no temperature: those before it are done. The types, `Flt32` or `Flt64`, are
/// checked by the caller.
template <class Selection, class LawOf>
bool ConvertRadiances(STypedData destination, STypedData source, const u8* presets, const Selection& selection,
                      const LawOf& lawOf) {
    bool whole = true;
    ForEachPart(selection, presets, [&](const auto& part, u8 preset) {
        if (!whole) return;
        const std::optional<STemperatureLaw> law = lawOf(preset);
        whole = law.has_value();
        if (!whole) return;
        SElementScratch gathered;
        double values[kRunBlock];
        LoadBlock(ViewOf(part, source, gathered), part.count, values);
        whole = StoreTemperatures(*law, values, part.count, destination, part.out) == part.count;
    });
    return whole;
}

}  // namespace ovix::reduce
