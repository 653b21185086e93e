#include "core/math.h"

#include <algorithm>

#include "core/convert_array.h"
#include "core/visit.h"

namespace ovix {

namespace {

constexpr bool IsScale(ETempType scale) { return scale <= Rankine; }

double FromKelvin(double k, ETempType to) {
    switch (to) {
        case Celsius:
            return k - 273.15;
        case Fahrenheit:
            return k * 1.8 - 459.67;
        case Rankine:
            return k * 1.8;
        default:
            return k;
    }
}

double FromCelsius(double c, ETempType to) {
    switch (to) {
        case Fahrenheit:
            return c * 1.8 + 32.0;
        case Kelvin:
            return c + 273.15;
        case Rankine:
            return (c + 273.15) * 1.8;
        default:
            return c;
    }
}

double FromFahrenheit(double f, ETempType to) {
    return to == Celsius ? (f - 32.0) / 1.8 : FromKelvin((f + 459.67) / 1.8, to);
}

double FromRankine(double r, ETempType to) { return FromKelvin(r / 1.8, to); }

/// The element at `index` and those behind it.
STypedData From(STypedData data, u32 index) {
    return {static_cast<u8*>(data.data) + index * ElementSize(data.type), data.type};
}

}  // namespace

double CMath::ConvertTemperature(double temperature, ETempType from, ETempType to) {
    if (from == to || !IsScale(to)) return temperature;
    switch (from) {
        case Celsius:
            return FromCelsius(temperature, to);
        case Fahrenheit:
            return FromFahrenheit(temperature, to);
        case Kelvin:
            return FromKelvin(temperature, to);
        case Rankine:
            return FromRankine(temperature, to);
        default:
            return temperature;
    }
}

bool CMath::ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to) {
    if (!IsNumeric(dest.type) || !IsNumeric(source.type)) return false;
    if (from == to || !IsScale(from) || !IsScale(to)) return ConvertArray(dest, source, count);
    double block[512];  // stays in the first-level cache, and lets source and destination be one buffer
    const STypedData temperatures{block, Flt64};
    u32 n = 0;
    for (u32 at = 0; at < count; at += n) {
        n = std::min<u32>(count - at, std::size(block));
        ConvertArray(temperatures, From(source, at), n);
        for (u32 i = 0; i < n; ++i) block[i] = ConvertTemperature(block[i], from, to);
        ConvertArray(From(dest, at), temperatures, n);
    }
    return true;
}

}  // namespace ovix
