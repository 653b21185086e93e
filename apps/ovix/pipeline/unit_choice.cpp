#include "apps/ovix/pipeline/unit_choice.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

constexpr SQuantityWord kWords[] = {
    {"counts", EQuantity::Counts},     {"signal", EQuantity::Signal},
    {"radiance", EQuantity::Radiance}, {"temperature", EQuantity::Temperature},
    {"red", EQuantity::Red},           {"green", EQuantity::Green},
    {"blue", EQuantity::Blue},         {"average", EQuantity::Average},
};

struct SUnitFacts {
    EUnit unit;
    EQuantity quantity;
    std::optional<ECalibration> calibration;
};

/// Of two units of one quantity the factory's comes first.
constexpr SUnitFacts kUnits[] = {
    {Counts, EQuantity::Counts, {}},
    {ObjectSignal, EQuantity::Signal, {}},
    {RadianceFactory, EQuantity::Radiance, ECalibration::Factory},
    {RadianceUser, EQuantity::Radiance, ECalibration::User},
    {TemperatureFactory, EQuantity::Temperature, ECalibration::Factory},
    {TemperatureUser, EQuantity::Temperature, ECalibration::User},
    {RedChannel, EQuantity::Red, {}},
    {GreenChannel, EQuantity::Green, {}},
    {BlueChannel, EQuantity::Blue, {}},
    {RGBAverage, EQuantity::Average, {}},
};

/// What to give when nobody says: the first of these that the source has.
constexpr EQuantity kPreferred[] = {EQuantity::Temperature, EQuantity::Average, EQuantity::Counts};

const char* Word(EQuantity quantity) {
    return std::find_if(std::begin(kWords), std::end(kWords), [&](const auto& w) { return w.quantity == quantity; })
        ->word;
}

const char* Word(ECalibration calibration) { return calibration == ECalibration::Factory ? "factory" : "user"; }

std::string Listed(const TArray<EUnit>& offered) {
    std::string list;
    for (const EUnit unit : offered) list += (list.empty() ? "" : ", ") + UnitWords(unit);
    return list;
}

}  // namespace

std::optional<EUnit> FindUnit(const TArray<EUnit>& offered, EQuantity quantity,
                              std::optional<ECalibration> calibration) {
    for (const SUnitFacts& facts : kUnits) {
        const bool fits =
            facts.quantity == quantity && (!calibration || !facts.calibration || facts.calibration == calibration);
        if (fits && std::find(offered.begin(), offered.end(), facts.unit) != offered.end()) return facts.unit;
    }
    return {};
}

std::span<const SQuantityWord> QuantityWords() { return kWords; }

std::string UnitWords(EUnit unit) {
    for (const SUnitFacts& facts : kUnits) {
        if (facts.unit != unit) continue;
        return facts.calibration ? fmt::format("{} ({})", Word(facts.quantity), Word(*facts.calibration))
                                 : Word(facts.quantity);
    }
    return CString(reduce::UnitToString(unit)).GetUTF8();
}

EUnit ChooseUnit(const TArray<EUnit>& offered, const SMeasureOptions& options) {
    // Who names a calibration wants its temperatures, not counts where it has none.
    const auto quantity = options.calibration ? options.quantity.value_or(EQuantity::Temperature) : options.quantity;
    if (quantity) {
        if (const auto unit = FindUnit(offered, *quantity, options.calibration)) return *unit;
        const std::string wanted =
            options.calibration ? fmt::format("{} ({})", Word(*quantity), Word(*options.calibration)) : Word(*quantity);
        throw CFault({.problem = fmt::format("the source cannot give {}; it can give {}", wanted, Listed(offered))});
    }
    for (const EQuantity preferred : kPreferred) {
        if (const auto unit = FindUnit(offered, preferred, {})) return *unit;
    }
    throw CFault({.problem = "the source needs a --unit; it can give " + Listed(offered)});
}

}  // namespace ovix::app
