#include "reduce/convert/curlew_converter.h"

#include "reduce/convert/curlew_factory_cal_reduce_object.h"
#include "reduce/convert/kelvin_scale.h"
#include "reduce/convert/scene.h"
#include "reduce/convert/signal_calibration.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

SAdjustParams AdjustOf(const CCurlewFactoryCalReduceObject& cal) {
    SAdjustParams adjust;
    adjust.offset = cal.offset;
    adjust.gain = cal.gain;
    adjust.imgMin = cal.imgMin;
    adjust.imgMax = cal.imgMax;
    adjust.nonlinearOn = cal.nonlinearOn;
    adjust.nonlinearGain = cal.nonlinearGain;
    adjust.nonlinearOffset = cal.nonlinearOffset;
    return adjust;
}

}  // namespace

CCurlewConverter::CCurlewConverter() : TConverter(u16{65535}, u8{1}) {}

bool CCurlewConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    if (base != Counts || !objs.HasObjectOfType(CCurlewFactoryCalReduceObject::typeID, true)) return false;
    for (const EUnit unit : {Counts, RadianceFactory, ObjectSignal, TemperatureFactory}) units.Add(unit);
    return true;
}

bool CCurlewConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                              ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    const auto cal = objs.Get<CCurlewFactoryCalReduceObject>(0, false);
    if (!cal || !cal->valid) return false;

    const SAdjustParams adjust = AdjustOf(*cal);
    SCalibParams calib;
    CopySignalCalibration(calib, *cal);
    SObjectParams object;
    CopyScene(object, params ? *params : CObjectParametersReduceObject());
    meas_.init(&adjust, &object, &calib);
    if (params) params->estimatedAtmosphereTrans = static_cast<float>(meas_.getUsedAtmTao());
    InvalidateTables();
    return true;
}

bool CCurlewConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    meas_.ChangeScene(params->emissivity, params->distance);
    InvalidateTables();
    return true;
}

bool CCurlewConverter::UpdateLUT() { return UpdateTable(activePreset); }

bool CCurlewConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8) {
    switch (outputUnit) {
        case TemperatureFactory:
            meas_.imgToTemp(first, last, out, status, outputTempType);
            return true;
        case RadianceFactory:
            meas_.imgToRadiance(first, last, out, status);
            return true;
        case ObjectSignal:
            meas_.imgToObjectSignal(first, last, out, status);
            return true;
        default:
            return false;
    }
}

bool CCurlewConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    return ResolvePreset(preset) &&
           (RangeFromTable(first, last, out, status, preset, 32768) || RangeToOutput(first, last, out, status, preset));
}

bool CCurlewConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    if (!ResolvePreset(preset) || outputUnit != TemperatureFactory) return false;
    out = static_cast<float>(KelvinScale(outputTempType).FromKelvin(meas_.imgToTemp(signal, &status)));
    return true;
}

bool CCurlewConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    status = 0;
    if (outputUnit != TemperatureFactory) return false;
    signal = meas_.tempToImg(static_cast<float>(KelvinScale(outputTempType).ToKelvin(value)));
    return true;
}

}  // namespace ovix::reduce
