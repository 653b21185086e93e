#include "reduce/convert/meas_conv.h"

#include <limits>

#include "support/cameras.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

CMeasConv Model(const SScene& scene) { return ModelOf(CurlewCamera(), scene); }

TEST(MeasConv, TransmissionOfTheAir) {
    const auto tao = [](float distance, float kelvin, float humidity, float a1, float a2, float x, float b = 0) {
        CCurlewCal camera = CurlewCamera();
        camera.atmAlpha1 = a1, camera.atmAlpha2 = a2, camera.atmBeta1 = camera.atmBeta2 = b, camera.atmX = x;
        const SScene scene{.distance = distance, .atmosphereTemp = kelvin, .relativeHumidity = humidity};
        return ModelOf(camera, scene).getUsedAtmTao();
    };
    EXPECT_EQ(tao(0, 293.15f, 0.5f, 0.25f, -1.0f, 0.5f), 1.0);    // no path, and no test of the slope
    EXPECT_EQ(tao(100, 293.15f, 0.5f, 0.25f, 0.25f, 0.5f), 0.4);  // e^-2.5 is below the floor
    EXPECT_EQ(tao(4, 293.15f, 0, 0.001f, 0.1f, 1.9f), 1.0);       // above 1 here, below 1 far away
    EXPECT_EQ(tao(4, 293.15f, 0, -0.001f, 0.1f, 1.9f), 0.4);      // above 1 here and everywhere
    EXPECT_EQ(tao(9, 293.15f, 0, -0.1f, 1.0f, 0.5f), 0.4);        // 0.70, but rising with the distance
    EXPECT_NEAR(tao(9, 293.15f, 0, 0.05f, 0.05f, 0.5f, 1.0f), std::exp(-0.15), 1e-8);  // dry: the alphas alone
    // Temperatures beyond -30 to 90 degrees Celsius count as those, and so does water above 6.2365.
    EXPECT_EQ(tao(1, 363.2f, 0.01f, 0.1f, 0.1f, 0.5f, 0.1f), tao(1, 500.0f, 0.01f, 0.1f, 0.1f, 0.5f, 0.1f));
    EXPECT_NE(tao(1, 363.2f, 0.01f, 0.1f, 0.1f, 0.5f, 0.1f), tao(1, 362.15f, 0.01f, 0.1f, 0.1f, 0.5f, 0.1f));
    EXPECT_EQ(tao(1, 243.15f, 0.5f, 0.1f, 0.1f, 0.5f, 0.1f), tao(1, 100.0f, 0.5f, 0.1f, 0.1f, 0.5f, 0.1f));
    EXPECT_NEAR(tao(1, 353.15f, 1.0f, 0.0f, 0.0f, 0.5f, 0.1f), std::exp(-0.62365), 1e-8);
}

CMeasConv Adjusted(const SAdjustParams& adjust) {
    CMeasConv model;
    model.setAdjPar(&adjust);
    return model;
}

TEST(MeasConv, CountsAndPow) {
    const CMeasConv linear = Adjusted({.offset = -1000, .gain = 0.5f});
    const std::pair<int, double> pows[] = {{0, 0}, {-7, -499.5}, {3001, 1000.5}, {70000, 32267.5}};
    for (const auto& [img, pow] : pows) EXPECT_EQ(linear.imgToPow(img), pow);
    const std::pair<double, u16> counts[] = {{0.0, 0},       {1000.7, 3001}, {1000.8, 3002},  // rounded
                                             {1e300, 65535}, {-1e300, 1},    {std::nan(""), 1}};
    for (const auto& [pow, img] : counts) EXPECT_EQ(linear.powToImg(pow), img) << pow;
    EXPECT_EQ(linear.powToImg(1000.7, 0, 0.5), 2001);
    EXPECT_EQ(linear.powToImg(1e-9, 0, 1.0), 1);
    EXPECT_EQ(linear.powToImg(1000.7, 0, 0.00009), 1);
    // The sum is one of 32 bits.
    EXPECT_EQ(Adjusted({.offset = std::numeric_limits<i32>::max(), .gain = 0.5f}).imgToPow(1), -1073741824.0);

    const auto bent = [](float nonlinearGain) {
        return Adjusted(
            {.offset = 7, .gain = 0.25f, .nonlinearOn = 1, .nonlinearGain = nonlinearGain, .nonlinearOffset = 2000});
    };
    const float q = 10345.0f * 1e-5f;
    EXPECT_EQ(bent(1e-5f).imgToPow(12345), 10345.0 * 0.25 / (1.0 - q) + 7);
    EXPECT_NE(bent(1e-5f).imgToPow(12345), 10345.0 * 0.25 / (1.0 - 10345.0 * 1e-5f) + 7);
    EXPECT_EQ(bent(1e-5f).imgToPow(0), 0.0);
    const CMeasConv pole = bent(2e-5f);  // at 52,000
    EXPECT_EQ(pole.imgToPow(60000), 100000.0);
    for (const int img : {100, 2000, 2001, 30000, 51000}) {
        // The way back truncates towards zero: never further from the centre, and less than a count off.
        const double outward = img < 2000 ? -0.5 : 0.5;
        const double between = (img - 2000 + outward) * 0.25 / (1.0 - 2e-5 * (img - 2000 + outward)) + 7;
        EXPECT_EQ(pole.powToImg(between), img);
    }
    EXPECT_EQ(pole.powToImg(-20000.0), 1);   // behind the other pole
    EXPECT_EQ(pole.powToImg(1e300), 52000);  // the pole
    // No pole above the centre: what lies behind the one below is a number.
    EXPECT_NEAR(bent(-1e-3f).imgToPow(500), -1500 * 0.25 / (1.0 - 1.5) + 7, 1e-3);
}

TEST(MeasConv, PlanckCurve) {
    CCurlewCal camera = CurlewCamera();
    for (const float f : {1.0f, 0.5f, 1.5f}) {
        camera.planckF = f;
        const CMeasConv model = ModelOf(camera, kPlainScene);
        const double floor = f > 1 ? f * 1.0002 : 1.0002;
        EXPECT_DOUBLE_EQ(model.objSigToTemp(1e12), 1450.0 / std::log(floor > f + 18000 / 1e12 ? floor : f));
        EXPECT_DOUBLE_EQ(model.tempToObjSig(1e9), 18000.0 / (floor - f));
        EXPECT_DOUBLE_EQ(model.tempToObjSig(300.0), 18000.0 / (std::exp(1450.0 / 300.0) - f));
    }
    const CMeasConv model = Model(kPlainScene);
    for (const double none : {0.0, -1.0, 1450.0 / 709.78}) EXPECT_EQ(model.tempToObjSig(none), 0.0);
    EXPECT_GT(model.tempToObjSig(1450.0 / 709.7), 0.0);
    EXPECT_EQ(model.objSigToTemp(0.0), 0.0);
    EXPECT_EQ(model.objSigToTemp(-5.0), 0.0);
}

TEST(MeasConv, BuffersAndTheirStatus) {
    CMeasConv model = Model({.emissivity = 0.9f});
    const double bottom = model.powToObjSig(model.getPowUnderflow()), top = model.powToObjSig(model.getPowOverflow());
    const double fine = model.powToObjSig((20000 - 1000) * double{0.02f});
    const struct {
        float in;
        double limited, plain;
        u8 status, statusOff;
    } kCases[] = {
        {20000.9f, fine, fine, 0, 0},  // truncated
        {0.9f, bottom, model.powToObjSig(0.0), 34, 32},
        {-0.9f, bottom, model.powToObjSig(0.0), 34, 32},
        {-1.0f, bottom, model.powToObjSig(model.imgToPow(1)), 2, 2},
        {65535.0f, top, model.powToObjSig(model.imgToPow(65535)), 4, 0},
        {65536.0f, top, model.powToObjSig(model.imgToPow(65535)), 4, 4},
        {1e30f, top, model.powToObjSig(model.imgToPow(65535)), 4, 4},
        {std::numeric_limits<float>::quiet_NaN(), bottom, model.powToObjSig(model.imgToPow(1)), 2, 2},
    };
    for (const auto& c : kCases) {
        for (const bool clip : {true, false}) {
            model.setClipOn(clip);
            float out = 0, plain = 0;
            u8 status = 99;
            model.imgToObjectSignal(&out, &c.in, &status, 1);
            model.imgToObjectSignal(&plain, &c.in, nullptr, 1);
            EXPECT_EQ(out, static_cast<float>(clip ? c.limited : c.plain)) << c.in;
            EXPECT_EQ(plain, static_cast<float>(c.plain)) << c.in;
            EXPECT_EQ(status, clip ? c.status : c.statusOff) << c.in;
        }
    }
}

TEST(MeasConv, AnUnknownScaleAndBlackObjects) {
    const CMeasConv black = Model({.emissivity = 0.0f});
    float out[2] = {-1, -1}, in[2] = {9000.9f, 40000};
    u8 status[3] = {99, 99, 99};
    Model({}).imgToTemp(0, 1, out, status, kNoScale);  // left alone, with a status all the same
    EXPECT_EQ(Text(out[0], out[1], status[0], status[1], status[2]), "-1 -1 34 2 99 ");
    Model({}).imgToTemp(out, in, status, 2, Fahrenheit);
    for (int i = 0; i < 2; ++i) {
        const double kelvin = Model({}).imgToTemp(static_cast<i32>(in[i]), nullptr);
        EXPECT_EQ(out[i], static_cast<float>(kelvin * 1.8 - 459.67));
    }
    black.imgToTemp(100, 101, out, status, Kelvin);
    EXPECT_EQ(Text(black.getK1(), black.getK2(), black.objSigToPow(12.0), black.tempToImg(300.0), out[0]),
              "0 0 100000 65535 0 ");
}

TEST(MeasConv, WhatAChangeRecomputes) {
    CMeasConv model = Model({.emissivity = 0.8f, .extOpticsTrans = 0.9f, .atmosphereTrans = 0.9f});
    const double before = model.getK2();
    EXPECT_EQ(model.setMeasAmbObjSig(100.0), -1.0);
    EXPECT_EQ(model.getK2(), before);
    EXPECT_TRUE(model.setClipOn(false) && !model.isClipOn());
    u8 status = 99;
    EXPECT_TRUE(model.clipPow(1e9, &status) == 1e9 && status == 0);
    EXPECT_DOUBLE_EQ(model.getPowOverflow(), 64534 * double{0.02f});  // what the counts can say
    model.setClipOn(true);
    const double e = 0.8f, t = 0.9f, x = 0.9f;
    EXPECT_NEAR(model.getK2(), 100 * ((1 - e) / e + (1 - t) / (t * e) + (1 - x) / (x * t * e)), 1e-12);

    SObjectParams object;
    EXPECT_TRUE(model.getObjPar(object) && object.emissivity == 0.8f);
    model.setObjPar(nullptr);
    EXPECT_TRUE(!model.getObjPar(object) && model.getK1() == 1 / (e * t * x));  // no update without a scene
    model.setDefObjPar();
    EXPECT_EQ(Text(model.getUsedAtmTao(), model.getK1(), model.ObjPar()->reflectedTemp), "1 1 293.15 ");
    const double limited = model.getPowOverflow();
    model.setCalibPar(nullptr);
    EXPECT_EQ(model.getPowOverflow(), limited);
    model.init(nullptr, nullptr, nullptr);
    EXPECT_EQ(Text(model.getPowOverflow(), model.getMeasAmbObjSig(), model.AdjPar()->imgMax), "0 -1 65534 ");
}

}  // namespace
}  // namespace ovix::reduce
