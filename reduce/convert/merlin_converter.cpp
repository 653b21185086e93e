#include "reduce/convert/merlin_converter.h"

#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

using CCal = CMerlinFactoryCalReduceObject;

constexpr u16 kTopSignal = 16383;

}  // namespace

CMerlinConverter::CMerlinConverter() : TConverter(u16{kTopSignal}, u8{kPresets}) {}

bool CMerlinConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    if (base != Counts || !objs.HasObjectOfType(CCal::typeID, true)) return false;
    for (const EUnit unit : {Counts, RadianceFactory, TemperatureFactory}) units.Add(unit);
    return true;
}

bool CMerlinConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                              ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    const CObjectParametersReduceObject scene = params ? *params : CObjectParametersReduceObject();
    for (u8 p = 0; p < kPresets; ++p) {
        if (!presets[p]) continue;
        const auto cal = objs.Get<CCal>(p, false);
        if (!cal) return false;
        meas_[p].Init(*cal, scene);
        if (params) params->estimatedAtmosphereTrans = static_cast<float>(meas_[p].getUsedAtmTao());
    }
    InvalidateTables();
    return true;
}

bool CMerlinConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    for (u8 p = 0; p < kPresets; ++p) {
        if (!presets[p]) continue;
        meas_[p].ReInit(*params);
        tables_[p].valid = false;
    }
    return true;
}

bool CMerlinConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    switch (outputUnit) {
        case TemperatureFactory:
            meas_[preset].SignalToTemperature(first, last, out, status, outputTempType);
            return true;
        case RadianceFactory:
            meas_[preset].SignalToRadiance(first, last, out, status);
            return true;
        default:
            return false;
    }
}

bool CMerlinConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    const bool mayTakeTable = first < kTopSignal && last < kTopSignal;
    return (mayTakeTable && RangeFromTable(first, last, out, status, preset, 8192)) ||
           RangeToOutput(first, last, out, status, preset);
}

bool CMerlinConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    return ResolvePreset(preset) && RangeToOutput(signal, signal, &out, &status, preset);
}

bool CMerlinConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    switch (outputUnit) {
        case TemperatureFactory:
            signal = meas_[preset].TemperatureToSignal(value, &status, outputTempType);
            return true;
        case RadianceFactory:
            signal = meas_[preset].RadianceToSignal(value, &status);
            return true;
        default:
            return false;
    }
}

}  // namespace ovix::reduce
