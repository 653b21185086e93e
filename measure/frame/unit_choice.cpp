#include "measure/frame/unit_choice.h"

#include <algorithm>

namespace ovix::measure {

namespace {

struct SUnitFacts {
    EUnit unit;
    EQuantity quantity;
    const char* word;
    std::optional<ECalibration> calibration = {};
};

/// Of two units of one quantity the factory's comes first.
constexpr SUnitFacts kUnits[] = {
    {Counts, EQuantity::Counts, "counts"},
    {ObjectSignal, EQuantity::Signal, "signal"},
    {RadianceFactory, EQuantity::Radiance, "radiance", ECalibration::Factory},
    {RadianceUser, EQuantity::Radiance, "radiance", ECalibration::User},
    {TemperatureFactory, EQuantity::Temperature, "temperature", ECalibration::Factory},
    {TemperatureUser, EQuantity::Temperature, "temperature", ECalibration::User},
    {RedChannel, EQuantity::Red, "red"},
    {GreenChannel, EQuantity::Green, "green"},
    {BlueChannel, EQuantity::Blue, "blue"},
    {RGBAverage, EQuantity::Average, "average"},
};

/// What to give when nobody says: the first of these that the source has.
constexpr EQuantity kPreferred[] = {EQuantity::Temperature, EQuantity::Average, EQuantity::Counts};

std::string Words(const char* quantity, std::optional<ECalibration> calibration) {
    if (!calibration) return quantity;
    return std::string(quantity) + (*calibration == ECalibration::Factory ? " (factory)" : " (user)");
}

const char* Word(EQuantity quantity) { return std::ranges::find(kUnits, quantity, &SUnitFacts::quantity)->word; }

CError NotOffered(const std::string& wanted, std::span<const EUnit> offered) {
    std::string list;
    for (const EUnit unit : offered) list += (list.empty() ? "" : ", ") + UnitWords(unit);
    return CError(
        {.id = EError::UnitNotOffered,
         .problem = "the source cannot give " + wanted + "; it can give " + (list.empty() ? "nothing" : list)});
}

}  // namespace

std::optional<EUnit> FindUnit(std::span<const EUnit> offered, EQuantity quantity,
                              std::optional<ECalibration> calibration) {
    for (const SUnitFacts& facts : kUnits) {
        const bool fits =
            facts.quantity == quantity && (!calibration || !facts.calibration || facts.calibration == calibration);
        if (fits && std::ranges::find(offered, facts.unit) != offered.end()) return facts.unit;
    }
    return {};
}

std::string UnitWords(EUnit unit) {
    const auto facts = std::ranges::find(kUnits, unit, &SUnitFacts::unit);
    if (facts != std::end(kUnits)) return Words(facts->word, facts->calibration);
    return CString(reduce::UnitToString(unit)).GetUTF8();
}

EUnit ChooseUnit(std::span<const EUnit> offered, const SMeasureOptions& options) {
    // Who names a calibration wants its temperatures, not counts where it has none.
    const auto quantity = options.calibration ? options.quantity.value_or(EQuantity::Temperature) : options.quantity;
    if (quantity) {
        if (const auto unit = FindUnit(offered, *quantity, options.calibration)) return *unit;
        throw NotOffered(Words(Word(*quantity), options.calibration), offered);
    }
    for (const EQuantity preferred : kPreferred) {
        if (const auto unit = FindUnit(offered, preferred, {})) return *unit;
    }
    throw NotOffered("a quantity unless one is named", offered);
}

}  // namespace ovix::measure
