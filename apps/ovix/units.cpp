#include "apps/ovix/units.h"

namespace ovix::app {

std::string SUnitText::Label() const { return quantity == "Counts" ? quantity : quantity + " (" + symbol + ")"; }

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
