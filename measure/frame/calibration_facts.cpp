#include "measure/frame/calibration_facts.h"

#include <concepts>

#include "measure/frame/scene.h"

namespace ovix::measure {

namespace {

/// Collects the values of one calibration. Each value of single precision becomes the double of its shortest text.
class CFacts {
  public:
    explicit CFacts(SCalibrationFacts& facts) : facts_(facts) {}

    void Add(const char* key, const char* unit, float value) { Put(key, unit, ShortestDouble(value)); }
    void Add(const char* key, const char* unit, double value) { Put(key, unit, value); }
    void Add(const char* key, const char* unit, std::integral auto value) {
        Put(key, unit, static_cast<double>(value));
    }

    /// What all factory calibrations have, whatever their precision.
    template <class Cal>
    void CurveAndAir(const Cal& c) {
        Add("planckR", "", c.planckR);
        Add("planckB", "K", c.planckB);
        Add("planckF", "", c.planckF);
        Add("atmosphereAlpha1", "", c.atmAlpha1);
        Add("atmosphereAlpha2", "", c.atmAlpha2);
        Add("atmosphereBeta1", "", c.atmBeta1);
        Add("atmosphereBeta2", "", c.atmBeta2);
        Add("atmosphereX", "", c.atmX);
    }
    /// The limits of the families with an object signal.
    template <class Cal>
    void Limits(const Cal& c) {
        Add("underflow", "K", c.underflowTemp);
        Add("lower", "K", c.lowerTemp);
        Add("upper", "K", c.upperTemp);
        Add("overflow", "K", c.overflowTemp);
        Add("radianceFitLow", "K", c.radFitLowTemp);
        Add("radianceFitHigh", "K", c.radFitHighTemp);
    }

  private:
    void Put(const char* key, const char* unit, double value) {
        facts_.values.push_back({.key = key, .name = {}, .unit = unit, .value = value, .origin = facts_.origin});
    }

    SCalibrationFacts& facts_;
};

void Describe(const reduce::CCurlewFactoryCalReduceObject& c, SCalibrationFacts& facts) {
    facts.model = "Curlew (factory)";
    CFacts to(facts);
    to.Add("gain", "", c.gain);
    to.Add("offset", "counts", c.offset);
    to.Add("lowest", "counts", c.imgMin);
    to.Add("highest", "counts", c.imgMax);
    to.Add("nonlinear", "", c.nonlinearOn != 0);
    to.Add("nonlinearGain", "", c.nonlinearGain);
    to.Add("nonlinearOffset", "counts", c.nonlinearOffset);
    to.CurveAndAir(c);
    to.Limits(c);
}

void Describe(const reduce::CTernFactoryCalReduceObject& c, SCalibrationFacts& facts) {
    facts.model = "Tern (factory)";
    CFacts to(facts);
    to.Add("gain", "", c.adjustGain);
    to.Add("offset", "counts", c.adjustOffset);
    to.Add("compensatesDrift", "", c.tdriftMode == 1);
    to.Add("frontPanel", "K", c.frontPanelTemp);
    to.Add("airGap", "K", c.airGapTemp);
    to.Add("dewar", "K", c.dewarTemp);
    to.CurveAndAir(c);
    to.Limits(c);
}

void Describe(const reduce::CMerlinFactoryCalReduceObject& c, SCalibrationFacts& facts) {
    facts.model = "Merlin (factory)";
    CFacts to(facts);
    to.Add("degree", "", c.degree);
    for (const double coefficient : c.c) to.Add("coefficients", "", coefficient);
    to.Add("signalOffset", "counts", c.signalOffset);
    to.CurveAndAir(c);
    to.Add("low", "°C", c.lowTemp);
    to.Add("high", "°C", c.highTemp);
    to.Add("fitLow", "counts", c.fitLowSignal);
    to.Add("fitHigh", "counts", c.fitHighSignal);
}

template <class Cal>
SCalibrationFacts DescribePreset(reduce::CReduceObjectArray& objects, u8 preset) {
    SCalibrationFacts facts;
    if (const auto cal = objects.Get<Cal>(preset, false)) Describe(*cal, facts);
    return facts;
}

}  // namespace

SCalibrationFacts FactoryCalibration(reduce::CReduceObjectArray& objects, u8 preset) {
    const GUID converter = reduce::converterFactory()->ConverterGUIDForUnit(objects, TemperatureFactory);
    if (converter == reduce::CTernConverter::kID)
        return DescribePreset<reduce::CTernFactoryCalReduceObject>(objects, preset);
    if (converter == reduce::CMerlinConverter::kID)
        return DescribePreset<reduce::CMerlinFactoryCalReduceObject>(objects, preset);
    if (converter == reduce::CCurlewConverter::kID)
        return DescribePreset<reduce::CCurlewFactoryCalReduceObject>(objects, 0);  // one for all presets
    return {};
}

SCalibrationFacts UserCalibration(reduce::CReduceObjectArray& objects, u8 preset) {
    const auto object = objects.Get<reduce::CRCalReduceObject>(-1, false);
    if (!object) return {};
    const CRCalFile& cal = object->cal;
    SCalibrationFacts facts{.model = "user"};
    CFacts to(facts);
    double low = 0, high = 0;
    if (cal.GetBandpass(low, high)) {
        to.Add("bandLow", "µm", low);
        to.Add("bandHigh", "µm", high);
    }
    int order = 0;
    TArray<double> coefficients, temperatures;
    if (cal.GetPolyOrder(preset, order)) to.Add("order", "", order);
    cal.GetCoefficients(preset, coefficients);
    for (const double coefficient : coefficients) to.Add("coefficients", "", coefficient);
    int temperatureOrder = 0;
    cal.GetTempPolyOrder(preset, temperatureOrder);
    cal.GetLookup(preset, coefficients, temperatures);
    facts.temperatureBy = temperatures.size() ? "table" : temperatureOrder ? "polynomial" : "Planck's law";
    return facts;
}

}  // namespace ovix::measure
