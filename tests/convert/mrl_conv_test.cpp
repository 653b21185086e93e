#include "reduce/convert/mrl_conv.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <numeric>
#include <thread>
#include <vector>

#include "support/cameras.h"

namespace ovix::reduce {
namespace {

using namespace test;

CMrlConv Model(const CMerlinCal& camera) { return ModelOf(camera, kPlainScene); }

TEST(MrlConv, PowersWrapAndDegreesEnd) {
    CMerlinCal camera = MerlinCamera();
    camera.lowTemp = -270.0f, camera.highTemp = 3000.0f;
    camera.c[0] = camera.c[1] = 0, camera.c[2] = 1e-3, camera.c[3] = 1e-5, camera.c[6] = 1e-16;
    const auto radiance = [&](i32 degree, u16 signal) {
        camera.degree = degree;
        return Model(camera).SignalToRadiance(signal, nullptr);
    };
    EXPECT_FLOAT_EQ(radiance(2, 46340), 2147395.6f);
    EXPECT_FLOAT_EQ(radiance(2, 46341), -2147479.015f) << "2^32 less";
    EXPECT_FLOAT_EQ(radiance(3, 2600), 6760 + 3961.30816f) << "2^34 less";
    EXPECT_EQ(radiance(-3, 1000), 0.0f) << "there is no such degree";
    EXPECT_EQ(radiance(0, 1000), 1000.0f);
    EXPECT_EQ(radiance(9, 1291), radiance(6, 1291)) << "there are no coefficients beyond";
}

TEST(MrlConv, TheWayBackTakesItsPowersInSinglePrecision) {
    CMerlinCal camera = MerlinCamera(2);
    camera.c[0] = 0, camera.c[1] = 0.1, camera.c[2] = 1e-4;
    camera.lowTemp = -270.0f, camera.highTemp = 3000.0f;
    TArray<double> values, signals, inverse;
    for (const int signal : {300, 3440, 6580, 9720, 12860, 16000}) {
        values.Add(0.1 * signal + 1e-4 * (signal * signal));
        signals.Add(signal);
    }
    ASSERT_TRUE(LinearLeastSquareFit(values, signals, 2, inverse));
    const CMrlConv model = Model(camera);
    for (float r = 500; r < 27000; r += 0.25f) {
        const double sum = inverse[0] + inverse[1] * r + inverse[2] * (r * r);
        ASSERT_EQ(model.RadianceToSignal(r, nullptr), static_cast<u16>(std::llround(sum))) << r;
    }
}

TEST(MrlConv, LimitsOfRadianceStandApartFromTheRange) {
    // The range, and how far from its ends radiances are outside and beyond, in kelvin: above, then below.
    const double cases[][6] = {
        {-10, 300, 6.0, 15.0, 2.0, 5.0}, {-10, 30, 2.0, 5.0, 2.0, 5.0}, {-150, -120, 2.4, 6.0, 3.0, 7.5}};
    for (const auto& [low, high, outside, beyond, outsideBelow, beyondBelow] : cases) {
        CMerlinCal camera = MerlinCamera();
        camera.lowTemp = static_cast<float>(low), camera.highTemp = static_cast<float>(high);
        camera.c[0] = 0, camera.c[1] = 1;
        const CMrlConv model = Model(camera);
        const auto radiance = [&](double celsius) {
            return camera.planckR / (std::exp(camera.planckB / (celsius + 273.15)) - 1);
        };
        const double upper = radiance(high + outside), over = radiance(high + beyond);
        const double lower = radiance(low - outsideBelow), under = radiance(low - beyondBelow);
        const std::pair<double, int> codes[] = {{upper * 0.9999, 0}, {upper * 1.0001, 1}, {over * 0.9999, 1},
                                                {over * 1.0001, 4},  {lower * 1.0001, 0}, {lower * 0.9999, 1},
                                                {under * 1.0001, 1}, {under * 0.9999, 2}};
        for (const auto& [value, code] : codes) {
            u8 status = 99;
            const u16 signal = model.RadianceToSignal(static_cast<float>(value), &status);
            EXPECT_EQ(status, code) << high << ' ' << value;
            EXPECT_EQ(signal, static_cast<u16>(static_cast<i64>(std::clamp(value, under, over)))) << high;  // no clamp
        }
    }
}

TEST(MrlConv, AForkedChildConvertsAlone) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a child waits for ever for locks that the sanitizer's allocator held at the fork";
#endif
    const CMrlConv model = Model(MerlinCamera());
    std::vector<u16> in(200000);
    std::iota(in.begin(), in.end(), u16{0});
    const auto convert = [&] {
        std::vector<float> out(in.size());
        model.SignalToTemperature(in.data(), out.data(), nullptr, static_cast<u32>(in.size()), Kelvin);
        return out;
    };
    const std::vector<float> expected = convert();
    std::atomic<bool> done = false;
    std::thread load([&] {
        while (!done) convert();
    });
    for (int i = 0, ended = -1; i < 50; ++i, ended = -1) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(60);  // ends a child that waits for threads which it has not
            _exit(convert() == expected ? 0 : 1);
        }
        waitpid(child, &ended, 0);
        EXPECT_EQ(ended, 0);
    }
    done = true;
    load.join();
}

TEST(MrlConv, RadiancesThereAndBack) {
    for (const i32 degree : {1, -1, 5}) {
        const CMrlConv model = Model(MerlinCamera(degree));
        const u16 in[] = {0, 65535, 9000};
        float each[3], range[2] = {-1, -1};
        model.SignalToRadiance(in, each, nullptr, 3);  // limited all the same
        model.SignalToRadiance(9, 8, range + 1, nullptr);
        model.SignalToRadiance(65535, 65535, range, nullptr);
        EXPECT_TRUE(range[0] == each[1] && range[1] == -1.0f);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(each[i], model.SignalToRadiance(in[i], nullptr)) << in[i];
    }
    const CMrlConv model = Model(MerlinCamera());
    u8 status = 99;
    for (const auto& [scale, factor, offset] : kScaleSteps) {
        const float value = static_cast<float>(300 * factor - offset);
        const double radiance = 2.2e8 / (std::exp(3300.0 / 300) - 1);
        EXPECT_NEAR(model.TemperatureToRadiance(value, &status, scale), radiance, 2e-2);
        EXPECT_NEAR(model.RadianceToTemperature(static_cast<float>(radiance), &status, scale), value, 1e-4);
    }
    EXPECT_EQ(status, 99);  // not theirs to write
    EXPECT_EQ(model.RadianceToTemperature(-1e9f, nullptr, Kelvin), 0.0f);
}

TEST(MrlConv, WhatAChangeRecomputes) {
    CMerlinCal cal = MerlinCamera(2);
    cal.CreateLUT(3);
    CObjectParametersReduceObject params;
    params.emissivity = 0.0f;        // counts as 1
    params.atmosphereTrans = -0.5f;  // not 0, so used as given
    CMrlConv model;
    model.Init(cal, params);
    EXPECT_TRUE(cal.tableCount == 3 && cal.table1);
    EXPECT_TRUE(params.emissivity == 0.0f && model.getUsedAtmTao() == -0.5);

    CopyScene(params, kPlainScene);
    const auto back = [&] {
        model.Init(cal, params);
        return model.RadianceToSignal(9000.0f, nullptr);
    };
    const u16 fitted = back();
    EXPECT_NEAR(fitted, (9000 + 330) / 1.1, 20);
    cal.fitHighSignal = 1000;  // another fit would be another inverse
    EXPECT_EQ(back(), fitted);
    cal.c[2] = 3e-6;
    const u16 kept = back();
    EXPECT_NE(kept, fitted);
    cal.fitLowSignal = cal.fitHighSignal = 500;  // one point makes no fit: the inverse stays
    cal.c[2] = 2e-7;
    EXPECT_EQ(back(), kept);

    // Another scene leaves the limits, which do not hang on it; an emissivity of 0 counts as 1.
    const auto of300 = [&](float emissivity, float reflected) {
        params.emissivity = emissivity, params.reflectedTemp = reflected;
        model.ReInit(params);
        u8 status = 99;
        model.SignalToRadiance(16383, &status);
        EXPECT_EQ(status, 4);
        return model.TemperatureToRadiance(300.0f, nullptr, Kelvin);
    };
    const float plain = of300(1.0f, 293.15f);
    EXPECT_EQ(of300(0.0f, 293.15f), plain);
    EXPECT_NE(of300(0.5f, 350.0f), plain);
}

}  // namespace
}  // namespace ovix::reduce
