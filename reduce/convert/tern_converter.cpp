#include "reduce/convert/tern_converter.h"

#include "reduce/convert/scene.h"
#include "reduce/convert/signal_calibration.h"
#include "reduce/convert/tern_factory_cal_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

using CCal = CTernFactoryCalReduceObject;

_adjust_par_t AdjustOf(const CCal& cal) {
    _adjust_par_t adjust;
    adjust.mode = 2;
    adjust.gain = cal.adjustGain;
    adjust.offset = cal.adjustOffset;
    return adjust;
}

_tdrift_par_t DriftOf(const CCal& cal) {
    _tdrift_par_t drift;
    drift.mode = cal.tdriftMode;
    drift.reserved1 = cal.tdriftReserved1;
    drift.driftR = cal.driftR;
    drift.driftB = cal.driftB;
    drift.driftF = cal.driftF;
    drift.drift3 = cal.drift3;
    drift.drift4 = cal.drift4;
    drift.drift5 = cal.drift5;
    drift.drift6 = cal.drift6;
    drift.drift7 = cal.drift7;
    drift.drift8 = cal.drift8;
    drift.drift9 = cal.drift9;
    drift.reserved2 = cal.tdriftReserved2;
    return drift;
}

_cal_param_t CalibOf(const CCal& cal) {
    _cal_param_t calib;
    calib.planckForm = 2;
    calib.gainDrift0 = cal.gainDrift0;
    calib.gainDrift1 = cal.gainDrift1;
    calib.gainDrift2 = cal.gainDrift2;
    calib.gainDrift3 = cal.gainDrift3;
    calib.atmosphereForm = 1;
    CopySignalCalibration(calib, cal);
    return calib;
}

}  // namespace

CTernConverter::CTernConverter() : TConverter(u16{CTrnMeasConv::kSignals - 1}, kPresets) {}

bool CTernConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    if (base != Counts || !objs.HasObjectOfType(CCal::typeID, true)) return false;
    for (const EUnit unit : {Counts, RadianceFactory, ObjectSignal, TemperatureFactory}) units.Add(unit);
    return true;
}

bool CTernConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                            ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    _object_par_t object;
    CopyScene(object, params ? *params : CObjectParametersReduceObject());
    for (u8 p = 0; p < kPresets; ++p) {
        if (!presets[p]) continue;
        const auto cal = objs.Get<CCal>(p, false);
        if (!cal) return false;
        const _adjust_par_t adjust = AdjustOf(*cal);
        const _tdrift_par_t drift = DriftOf(*cal);
        const _cal_param_t calib = CalibOf(*cal);
        meas_[p].init(&adjust, &drift, &object, &calib, true);
        const _imageinfo_t instrument{cal->frontPanelTemp, cal->airGapTemp, cal->dewarTemp};
        meas_[p].UpdateFromTempSens(&instrument);
        if (params) params->estimatedAtmosphereTrans = static_cast<float>(meas_[p].getUsedAtmTao());
    }
    InvalidateTables();
    return true;
}

bool CTernConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    for (u8 p = 0; p < kPresets; ++p) {
        if (!presets[p]) continue;
        meas_[p].ChangeScene(params->emissivity, params->distance);
        tables_[p].valid = false;
    }
    return true;
}

bool CTernConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    const CTrnMeasConv& meas = meas_[preset];
    switch (outputUnit) {
        case TemperatureFactory:
            meas.imgToTemp(first, last, out, status, outputTempType);
            return true;
        case RadianceFactory:
            meas.imgToRad(first, last, out, status);
            return true;
        case ObjectSignal:
            meas.imgToObjectSignal(first, last, out, status);
            return true;
        default:
            return false;
    }
}

bool CTernConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    return ResolvePreset(preset) && RangeToOutput(signal, signal, &out, &status, preset);
}

bool CTernConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    const CTrnMeasConv& meas = meas_[preset];
    switch (outputUnit) {
        case TemperatureFactory:
            signal = meas.tempToImg(value, &status, outputTempType);
            return true;
        case RadianceFactory:
            signal = meas.radToImg(value, &status);
            return true;
        default:
            return false;
    }
}

}  // namespace ovix::reduce
