#include "core/math.h"

#include <algorithm>

#include "core/convert_array.h"
#include "core/temperature_scale.h"
#include "core/visit.h"

namespace ovix {

namespace {

/// The element at `index` and those behind it.
STypedData From(STypedData data, u32 index) {
    return {static_cast<u8*>(data.data) + index * ElementSize(data.type), data.type};
}

}  // namespace

double CMath::ConvertTemperature(double temperature, ETempType from, ETempType to) {
    const STemperatureScale source = TemperatureScale(from), dest = TemperatureScale(to);
    if (from == to || !source.known || !dest.known) return temperature;
    if (from == Celsius) return dest.FromCelsius(temperature);
    if (from == Fahrenheit && to == Celsius) return (temperature - 32.0) / 1.8;
    return dest.FromKelvin(source.ToKelvin(temperature));
}

bool CMath::ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to) {
    if (!IsNumeric(dest.type) || !IsNumeric(source.type)) return false;
    if (from == to || !TemperatureScale(from).known || !TemperatureScale(to).known)
        return ConvertArray(dest, source, count);
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
