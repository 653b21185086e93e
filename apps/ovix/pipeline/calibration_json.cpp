#include "apps/ovix/pipeline/calibration_json.h"

#include "apps/ovix/pipeline/scene_json.h"

namespace ovix::app {

namespace {

double Exact(float value) { return ShortestDouble(value); }
double Exact(double value) { return value; }

/// What all factory calibrations have, whatever their precision.
template <class Cal>
Json CurveAndAir(const Cal& c) {
    return {{"planckR", Exact(c.planckR)},
            {"planckBKelvin", Exact(c.planckB)},
            {"planckF", Exact(c.planckF)},
            {"atmosphereAlpha1", Exact(c.atmAlpha1)},
            {"atmosphereAlpha2", Exact(c.atmAlpha2)},
            {"atmosphereBeta1", Exact(c.atmBeta1)},
            {"atmosphereBeta2", Exact(c.atmBeta2)},
            {"atmosphereX", Exact(c.atmX)}};
}

/// The limits of the families with an object signal.
template <class Cal>
Json Limits(const Cal& c) {
    return {{"underflowKelvin", Exact(c.underflowTemp)},
            {"lowerKelvin", Exact(c.lowerTemp)},
            {"upperKelvin", Exact(c.upperTemp)},
            {"overflowKelvin", Exact(c.overflowTemp)},
            {"radianceFitLowKelvin", Exact(c.radFitLowTemp)},
            {"radianceFitHighKelvin", Exact(c.radFitHighTemp)}};
}

Json Describe(const reduce::CCurlewFactoryCalReduceObject& c) {
    Json json = {{"model", "Curlew (factory)"},
                 {"gain", Exact(c.gain)},
                 {"offsetCounts", c.offset},
                 {"lowestCounts", c.imgMin},
                 {"highestCounts", c.imgMax},
                 {"nonlinear", c.nonlinearOn != 0},
                 {"nonlinearGain", Exact(c.nonlinearGain)},
                 {"nonlinearOffsetCounts", c.nonlinearOffset}};
    json.update(CurveAndAir(c));
    json.update(Limits(c));
    return json;
}

Json Describe(const reduce::CTernFactoryCalReduceObject& c) {
    Json json = {{"model", "Tern (factory)"},
                 {"gain", Exact(c.adjustGain)},
                 {"offsetCounts", Exact(c.adjustOffset)},
                 {"compensatesDrift", c.tdriftMode == 1},
                 {"frontPanelKelvin", Exact(c.frontPanelTemp)},
                 {"airGapKelvin", Exact(c.airGapTemp)},
                 {"dewarKelvin", Exact(c.dewarTemp)}};
    json.update(CurveAndAir(c));
    json.update(Limits(c));
    return json;
}

Json Describe(const reduce::CMerlinFactoryCalReduceObject& c) {
    Json json = {{"model", "Merlin (factory)"},
                 {"degree", c.degree},
                 {"coefficients", c.c},
                 {"signalOffsetCounts", c.signalOffset}};
    json.update(CurveAndAir(c));
    json["lowCelsius"] = Exact(c.lowTemp);
    json["highCelsius"] = Exact(c.highTemp);
    json["fitLowCounts"] = c.fitLowSignal;
    json["fitHighCounts"] = c.fitHighSignal;
    return json;
}

template <class Cal>
Json DescribePreset(reduce::CReduceObjectArray& objects, u8 preset) {
    const auto cal = objects.Get<Cal>(preset, false);
    return cal ? Describe(*cal) : Json();
}

}  // namespace

Json FactoryCalibrationJson(reduce::CReduceObjectArray& objects, u8 preset) {
    const GUID converter = reduce::converterFactory()->ConverterGUIDForUnit(objects, TemperatureFactory);
    if (converter == reduce::CTernConverter::kID)
        return DescribePreset<reduce::CTernFactoryCalReduceObject>(objects, preset);
    if (converter == reduce::CMerlinConverter::kID)
        return DescribePreset<reduce::CMerlinFactoryCalReduceObject>(objects, preset);
    if (converter == reduce::CCurlewConverter::kID)
        return DescribePreset<reduce::CCurlewFactoryCalReduceObject>(objects, 0);  // one for all presets
    return nullptr;
}

Json UserCalibrationJson(reduce::CReduceObjectArray& objects, u8 preset) {
    const auto object = objects.Get<reduce::CRCalReduceObject>(-1, false);
    if (!object) return nullptr;
    const CRCalFile& cal = object->cal;
    Json json = {{"model", "user"}};
    double low = 0, high = 0;
    if (cal.GetBandpass(low, high)) json.update({{"bandLowMicrometres", low}, {"bandHighMicrometres", high}});
    int order = 0;
    TArray<double> coefficients, temperatures;
    if (cal.GetPolyOrder(preset, order)) json["order"] = order;
    cal.GetCoefficients(preset, coefficients);
    json["coefficients"] = std::vector<double>(coefficients.begin(), coefficients.end());
    int temperatureOrder = 0;
    cal.GetTempPolyOrder(preset, temperatureOrder);
    cal.GetLookup(preset, coefficients, temperatures);
    json["temperatureBy"] = temperatures.size() ? "table" : temperatureOrder ? "polynomial" : "Planck's law";
    return json;
}

}  // namespace ovix::app
