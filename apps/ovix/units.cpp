#include "apps/ovix/units.h"

namespace ovix::app {

std::string SUnitText::Label() const { return quantity == "Counts" ? quantity : quantity + " (" + symbol + ")"; }

std::span<const SQuantityWord> QuantityWords() {
    using measure::EQuantity;
    static constexpr SQuantityWord kWords[] = {
        {"counts", EQuantity::Counts},     {"signal", EQuantity::Signal},
        {"radiance", EQuantity::Radiance}, {"temperature", EQuantity::Temperature},
        {"red", EQuantity::Red},           {"green", EQuantity::Green},
        {"blue", EQuantity::Blue},         {"average", EQuantity::Average},
    };
    return kWords;
}

SUnitText UnitText(EUnit unit, ETempType scale) {
    switch (unit) {
        case Counts:
            return {"Counts", "counts", "counts"};
        case ObjectSignal:
            return {"Object signal", "counts", "counts"};
        case RadianceUser:
        case RadianceFactory:
            return {"Radiance", "W/(cm² sr)", "W/(cm² sr)"};
        case TemperatureUser:
        case TemperatureFactory:
            switch (scale) {
                case Celsius:
                    return {"Temperature", "°C", "K"};
                case Fahrenheit:
                    return {"Temperature", "°F", "°F"};
                case Kelvin:
                    return {"Temperature", "K", "K"};
                case Rankine:
                    return {"Temperature", "°R", "°R"};
            }
            return {"Temperature", "", ""};
        default:
            return {"Colour", "counts", "counts"};
    }
}

}  // namespace ovix::app
