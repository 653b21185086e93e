#include "reduce/convert/factory_converters.h"

#include "reduce/convert/factory_calibrations.h"
#include "reduce/convert/radiometry.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

using CCurlewCal = CCurlewFactoryCalReduceObject;
using CTernCal = CTernFactoryCalReduceObject;
using CMerlinCal = CMerlinFactoryCalReduceObject;

constexpr u16 kTopSignal14 = 16383;

/// What a family makes of the counts of a source that has a valid calibration of it.
bool Offer(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs, const GUID& calibration,
           std::initializer_list<EUnit> offered) {
    if (base != Counts || !objs.HasObjectOfType(calibration, true)) return false;
    for (const EUnit unit : offered) units.Add(unit);
    return true;
}

/// The array's object parameters, or the defaults that stand for them.
CObjectParametersReduceObject SceneOf(const TSharedPtr<CObjectParametersReduceObject>& params) {
    return params ? *params : CObjectParametersReduceObject();
}

void WriteBack(const TSharedPtr<CObjectParametersReduceObject>& params, const auto& model) {
    if (params) params->estimatedAtmosphereTrans = static_cast<float>(model.getUsedAtmTao());
}

// The range form of each model by unit; false for a unit that it does not know.

bool Range(const CMeasConv& model, EUnit unit, ETempType scale, u16 first, u16 last, float* out, u8* status) {
    if (unit == TemperatureFactory) model.imgToTemp(first, last, out, status, scale);
    if (unit == RadianceFactory) model.imgToRadiance(first, last, out, status);
    if (unit == ObjectSignal) model.imgToObjectSignal(first, last, out, status);
    return unit == TemperatureFactory || unit == RadianceFactory || unit == ObjectSignal;
}
bool Range(const CTrnMeasConv& model, EUnit unit, ETempType scale, u16 first, u16 last, float* out, u8* status) {
    if (unit == TemperatureFactory) model.imgToTemp(first, last, out, status, scale);
    if (unit == RadianceFactory) model.imgToRad(first, last, out, status);
    if (unit == ObjectSignal) model.imgToObjectSignal(first, last, out, status);
    return unit == TemperatureFactory || unit == RadianceFactory || unit == ObjectSignal;
}
bool Range(const CMrlConv& model, EUnit unit, ETempType scale, u16 first, u16 last, float* out, u8* status) {
    if (unit == TemperatureFactory) model.SignalToTemperature(first, last, out, status, scale);
    if (unit == RadianceFactory) model.SignalToRadiance(first, last, out, status);
    return unit == TemperatureFactory || unit == RadianceFactory;
}

SAdjustParams AdjustOf(const CCurlewCal& cal) {
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

_adjust_par_t AdjustOf(const CTernCal& cal) {
    _adjust_par_t adjust;
    adjust.mode = 2;
    adjust.gain = cal.adjustGain;
    adjust.offset = cal.adjustOffset;
    return adjust;
}

_tdrift_par_t DriftOf(const CTernCal& cal) {
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

_cal_param_t CalibOf(const CTernCal& cal) {
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

CCurlewConverter::CCurlewConverter() : TConverter(u16{65535}, u8{1}) {}

bool CCurlewConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    return Offer(units, base, objs, CCurlewCal::typeID, {Counts, RadianceFactory, ObjectSignal, TemperatureFactory});
}

bool CCurlewConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                              ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    const auto cal = objs.Get<CCurlewCal>(0, false);
    if (!cal || !cal->valid) return false;
    const SAdjustParams adjust = AdjustOf(*cal);
    SCalibParams calib;
    CopySignalCalibration(calib, *cal);
    SObjectParams object;
    CopyScene(object, SceneOf(params));
    meas_.init(&adjust, &object, &calib);
    WriteBack(params, meas_);
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
    return Range(meas_, outputUnit, outputTempType, first, last, out, status);
}

bool CCurlewConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    return ResolvePreset(preset) &&
           (RangeFromTable(first, last, out, status, preset, 32768) || RangeToOutput(first, last, out, status, preset));
}

bool CCurlewConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    if (!ResolvePreset(preset) || outputUnit != TemperatureFactory) return false;
    out = static_cast<float>(TemperatureScale(outputTempType).FromKelvin(meas_.imgToTemp(signal, &status)));
    return true;
}

bool CCurlewConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    status = 0;
    if (outputUnit != TemperatureFactory) return false;
    signal = meas_.tempToImg(static_cast<float>(TemperatureScale(outputTempType).ToKelvin(value)));
    return true;
}

bool CCurlewConverter::GetCalibratedRange(float& lower, float& upper, u8 preset) const {
    return ResolvePreset(preset) && meas_.GetCalibratedRange(outputUnit, outputTempType, lower, upper);
}

CTernConverter::CTernConverter() : TConverter(u16{kTopSignal14}, u8{kPresets}) {}

bool CTernConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    return Offer(units, base, objs, CTernCal::typeID, {Counts, RadianceFactory, ObjectSignal, TemperatureFactory});
}

bool CTernConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                            ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    _object_par_t object;
    CopyScene(object, SceneOf(params));
    const bool all = ForEachEnabled([&](u8 p) {
        const auto cal = objs.Get<CTernCal>(p, false);
        if (!cal) return false;
        const _adjust_par_t adjust = AdjustOf(*cal);
        const _tdrift_par_t drift = DriftOf(*cal);
        const _cal_param_t calib = CalibOf(*cal);
        meas_[p].init(&adjust, &drift, &object, &calib, true);
        const _imageinfo_t instrument{cal->frontPanelTemp, cal->airGapTemp, cal->dewarTemp};
        meas_[p].UpdateFromTempSens(&instrument);
        WriteBack(params, meas_[p]);
        return true;
    });
    if (all) InvalidateTables();
    return all;
}

bool CTernConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    return ForEachEnabled([&](u8 p) {
        meas_[p].ChangeScene(params->emissivity, params->distance);
        tables_[p].valid = false;
        return true;
    });
}

bool CTernConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    return Range(meas_[preset], outputUnit, outputTempType, first, last, out, status);
}

bool CTernConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    return ResolvePreset(preset) && RangeToOutput(signal, signal, &out, &status, preset);
}

bool CTernConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    const bool isTemperature = outputUnit == TemperatureFactory;
    if (!ResolvePreset(preset) || (!isTemperature && outputUnit != RadianceFactory)) return false;
    signal = isTemperature ? meas_[preset].tempToImg(value, &status, outputTempType)
                           : meas_[preset].radToImg(value, &status);
    return true;
}

bool CTernConverter::GetCalibratedRange(float& lower, float& upper, u8 preset) const {
    return ResolvePreset(preset) && meas_[preset].GetCalibratedRange(outputUnit, outputTempType, lower, upper);
}

CMerlinConverter::CMerlinConverter() : TConverter(u16{kTopSignal14}, u8{kPresets}) {}

bool CMerlinConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    return Offer(units, base, objs, CMerlinCal::typeID, {Counts, RadianceFactory, TemperatureFactory});
}

bool CMerlinConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                              ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags);
    const auto params = objs.GetObjectParameters(false);
    const CObjectParametersReduceObject scene = SceneOf(params);
    const bool all = ForEachEnabled([&](u8 p) {
        const auto cal = objs.Get<CMerlinCal>(p, false);
        if (!cal) return false;
        meas_[p].Init(*cal, scene);
        WriteBack(params, meas_[p]);
        return true;
    });
    if (all) InvalidateTables();
    return all;
}

bool CMerlinConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    return ForEachEnabled([&](u8 p) {
        meas_[p].ReInit(*params);
        tables_[p].valid = false;
        return true;
    });
}

void CMerlinConverter::PrepareTable(u8 preset) { meas_[preset].PrepareRanges(); }

bool CMerlinConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    return Range(meas_[preset], outputUnit, outputTempType, first, last, out, status);
}

bool CMerlinConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    if (!ResolvePreset(preset)) return false;
    const bool mayTakeTable = first < kTopSignal14 && last < kTopSignal14;
    return (mayTakeTable && RangeFromTable(first, last, out, status, preset, 8192)) ||
           RangeToOutput(first, last, out, status, preset);
}

bool CMerlinConverter::SignalToOutput(u16 signal, float& out, u8& status, u8 preset) {
    return ResolvePreset(preset) && RangeToOutput(signal, signal, &out, &status, preset);
}

bool CMerlinConverter::OutputToSignal(float value, u16& signal, u8& status, u8 preset) {
    const bool isTemperature = outputUnit == TemperatureFactory;
    if (!ResolvePreset(preset) || (!isTemperature && outputUnit != RadianceFactory)) return false;
    signal = isTemperature ? meas_[preset].TemperatureToSignal(value, &status, outputTempType)
                           : meas_[preset].RadianceToSignal(value, &status);
    return true;
}

bool CMerlinConverter::GetCalibratedRange(float& lower, float& upper, u8 preset) const {
    return ResolvePreset(preset) && meas_[preset].GetCalibratedRange(outputUnit, outputTempType, lower, upper);
}

}  // namespace ovix::reduce
