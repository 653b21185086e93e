/// Prints the bits of what the models, the scalar formulas and the statistics give: they must not depend on the flags
/// that this program is compiled with.
#include <cstdio>
#include <cstring>

#include "reduce/reduce.h"

using namespace ovix;
using namespace ovix::reduce;

namespace {

template <class T>
void Print(const char* what, T value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    std::printf("%s ", what);
    for (const unsigned char byte : bytes) std::printf("%02x", byte);
    std::printf("\n");
}

/// Numbers with long fractions, so that a product and a sum in one rounding would show.
void FillScene(auto& o) {
    o.emissivity = 0.937f;
    o.distance = 7.31f;
    o.reflectedTemp = 291.37f;
    o.atmosphereTemp = 287.83f;
    o.extOpticsTemp = 294.91f;
    o.extOpticsTrans = 0.973f;
    o.relativeHumidity = 0.437f;
}
void FillCalibration(auto& c) {
    c.planckR = 17396.37f;
    c.planckB = 1427.93f;
    c.planckF = 1.0317f;
    c.atmAlpha1 = 0.006569f;
    c.atmAlpha2 = 0.01262f;
    c.atmBeta1 = -0.002276f;
    c.atmBeta2 = -0.00667f;
    c.atmX = 1.9f;
    c.radFitLowTemp = 273.15f;
    c.radFitHighTemp = 573.15f;
    c.underflowTemp = 213.15f;
    c.overflowTemp = 1273.15f;
    c.lowerTemp = 233.15f;
    c.upperTemp = 773.15f;
}

void PrintModel(const char* what, const auto& model) {
    for (int count = 1000; count < 16000; count += 777) {
        Print(what, model.imgToPow(count));
        Print(what, model.imgToTemp(count, nullptr));
        Print(what, model.imgToObjectSignal(count, nullptr));
    }
    for (double kelvin = 250; kelvin < 500; kelvin += 17.3) Print(what, model.tempToImg(kelvin));
    Print(what, model.getUsedAtmTao());
    Print(what, model.getK1());
    Print(what, model.getK2());
}

void PrintCurlew() {
    SAdjustParams adjust;
    SObjectParams object;
    SCalibParams calib;
    FillScene(object);
    FillCalibration(calib);
    CMeasConv model(&adjust, &object, &calib);
    PrintModel("curlew", model);
}

void PrintTern() {
    _adjust_par_t adjust;
    _tdrift_par_t drift;
    _object_par_t object;
    _cal_param_t calib;
    FillScene(object);
    FillCalibration(calib);
    CTrnMeasConv model(&adjust, &drift, &object, &calib);
    for (int count = 1000; count < 16000; count += 777) {
        int code = 0;
        Print("tern", model.imgToPow(count));
        Print("tern", model.imgToTemp(count, &code));
    }
    Print("tern", model.getUsedAtmTao());
}

void PrintMerlin() {
    CMerlinFactoryCalReduceObject calibration;
    CObjectParametersReduceObject scene;
    FillScene(scene);
    calibration.planckR = 17396.37f;
    calibration.planckB = 1427.93f;
    calibration.planckF = 1.0317f;
    CMrlConv model;
    model.Init(calibration, scene);
    for (u16 signal = 100; signal < 60000; signal = static_cast<u16>(signal + 3777)) {
        Print("merlin", model.SignalToRadiance(signal, nullptr));
        Print("merlin", model.SignalToTemperature(signal, nullptr, Fahrenheit));
    }
}

void PrintFormulas() {
    const double a[] = {-3.1, 0.0137, 1.7e-7, 3.3e-12};
    for (double v = 0.37; v < 900; v *= 1.37) {
        Print("scale", CMath::ConvertTemperature(v, Fahrenheit, Rankine));
        Print("scale", CMath::ConvertTemperature(v, Celsius, Fahrenheit));
        Print("radiance", Radiance(v, 3.1, 5.3, 0.937));
        Print("radiance", ToRadiance(v, a, 3, 0.1, 0.937));
        Print("temperature", ToTemperatureCoeffs(v, a, 3, 0.937, Fahrenheit));
        Print("temperature", ToTemperatureRBF(v, 17396.37, 1427.93, 1.03, -0.7, 0, 0, 0, 0, 0.937, Celsius));
    }
}

void PrintStatistics() {
    CStats stats;
    CStatsCalculator calculator(stats);
    calculator.Start();
    for (int i = 0; i < 1000; ++i) calculator.AddData(i * 0.1 + 1e6, static_cast<u8>(i % 7 == 0), i % 40, i / 40);
    calculator.Finish();
    Print("statistics", stats.mean);
    Print("statistics", stats.standardDeviation);
}

}  // namespace

int main() {
    PrintCurlew();
    PrintTern();
    PrintMerlin();
    PrintFormulas();
    PrintStatistics();
}
