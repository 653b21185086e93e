#include "reduce/convert/trn_meas_conv.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

#include "reduce/convert/radiometry.h"
#include "support/cameras.h"
#include "support/pixel_buffers.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr ETempType kNoScale = static_cast<ETempType>(9);
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

CTrnMeasConv Model(const SScene& scene, bool compensated = false, const CTernCal& camera = TernCamera()) {
    const auto& c = camera;
    const _adjust_par_t adjust{2, c.adjustGain, c.adjustOffset};
    const _tdrift_par_t drift{compensated ? 1u : 0u,
                              0,
                              c.driftR,
                              c.driftB,
                              c.driftF,
                              c.drift3,
                              c.drift4,
                              c.drift5,
                              c.drift6,
                              c.drift7,
                              c.drift8,
                              c.drift9};
    _object_par_t object;
    CopyScene(object, scene);
    _cal_param_t calib;
    CopySignalCalibration(calib, camera);
    calib.gainDrift0 = c.gainDrift0, calib.gainDrift1 = c.gainDrift1;
    calib.gainDrift2 = c.gainDrift2, calib.gainDrift3 = c.gainDrift3;
    CTrnMeasConv model(&adjust, &drift, &object, &calib);
    const _imageinfo_t instrument{camera.frontPanelTemp, camera.airGapTemp, camera.dewarTemp};
    if (compensated) model.UpdateFromTempSens(&instrument);
    return model;
}

TEST(TrnMeasConv, FollowsTheFormulasInEveryScene) {
    const SScene scenes[] = {
        {},
        kPlainScene,
        {.emissivity = 0.7f, .distance = 10.0f, .reflectedTemp = 280.0f},
        {.emissivity = 0.95f, .distance = 50.0f, .atmosphereTemp = 278.149994f, .relativeHumidity = 0.8f},
        {.emissivity = 0.9f, .extOpticsTemp = 300.0f, .extOpticsTrans = 0.85f, .atmosphereTrans = 0.97f},
    };
    for (const SScene& scene : scenes) {
        for (const bool compensated : {false, true}) {
            SCOPED_TRACE(std::to_string(&scene - scenes) + (compensated ? ", compensated" : ""));
            const CTernReference reference(TernCamera(), scene, compensated);
            const CTrnMeasConv model = Model(scene, compensated);
            ExpectFollows<u16>(model, reference, 20000, 263.15, 343.15);
            ExpectClose(model.getTdrGain(), reference.driftGain, 1e-15);
            ExpectClose(model.getTrdOffset(), reference.driftOffset, 1e-15);
            for (u16 img = 0; img <= 20000; img = static_cast<u16>(img + 53)) {
                u8 status = 99;
                int code = 0;
                EXPECT_EQ(model.imgToTemp(i32{img}, &code), model.imgToTemp(img, &status, Kelvin));
                EXPECT_EQ(code, status & 4 ? 2 : status & 2 ? 3 : status & 1 ? 4 : 1) << img;
            }
            for (double kelvin = 263.15; kelvin < 343.15; kelvin += 0.37) {
                u8 status = 99;
                EXPECT_EQ(model.tempToImg(kelvin, &status, Kelvin), model.tempToImg(kelvin));
                EXPECT_EQ(status, 0);
            }
        }
    }
}

TEST(TrnMeasConv, AirTemperatureStaysInDouble) {
    CTernCal camera = TernCamera();
    camera.atmAlpha1 = camera.atmAlpha2 = 0, camera.atmBeta1 = camera.atmBeta2 = 0.01f, camera.atmX = 0.5f;
    const SScene scene{.distance = 100.0f, .atmosphereTemp = 300.07f};
    const auto tau = [&](Real celsius) { return AirTransmission(camera, celsius, 10.0L, scene.relativeHumidity); };
    const double found = Model(scene, false, camera).getUsedAtmTao();
    ExpectClose(found, tau(300.07f - 273.15L), 1e-15);
    EXPECT_GT(std::abs(found - static_cast<double>(tau(static_cast<float>(300.07f - 273.15)))), 1e-11);
}

TEST(TrnMeasConv, CountsAndPow) {
    CTrnMeasConv model = Model(kPlainScene);
    _adjust_par_t adjust{2, 0.5f, 1000.0f};
    model.setAdjPar(&adjust);
    const std::pair<int, double> imgs[] = {{0, -1.0}, {-7, -499.5}, {20000, 9500.0}, {70000, 32267.5}};
    for (const auto& [img, pow] : imgs) EXPECT_EQ(model.imgToPow(img), pow);  // 14 bits are no limit here
    const struct {
        double pow;
        u16 img;
    } kPows[] = {{-1.0, 0},    {1000.2, 3000}, {1000.3, 3001}, {-499.9, 1},  {-500.8, 65535},
                 {1e9, 65535}, {1e300, 65535}, {kNaN, 65535},  {-1e9, 65535}};
    for (const auto& c : kPows) EXPECT_EQ(model.powToImg(c.pow), c.img) << c.pow;
    // An object signal is a pow here: K1 is 1, K2 0.
    const struct {
        double signal;
        u16 img;
        u8 status;
    } kSignals[] = {{-1.0, 0, 32},      {1000.2, 3000, 0},   {1000.3, 3001, 0},   {-500.0, 1, 2}, {-500.2, 1, 2},
                    {-500.3, 65535, 4}, {32267.5, 65535, 0}, {32267.8, 65535, 4}, {1e300, 1, 2},  {kNaN, 1, 2}};
    for (const auto& c : kSignals) {
        u8 status = 99;
        EXPECT_EQ(model.objectSignalToImg(c.signal, &status), c.img) << c.signal;
        EXPECT_EQ(status, c.status) << c.signal;
        EXPECT_EQ(model.objectSignalToImg(c.signal, nullptr), c.img);
    }
    adjust.mode = 1;
    model.setAdjPar(&adjust);
    EXPECT_TRUE(model.imgToPow(3000) == 3000.0 && model.powToImg(3000.4) == 3000);
    model.setAdjPar(nullptr);
    EXPECT_EQ(model.AdjPar()->mode, 0u);

    u8 status = 99;
    const CTrnMeasConv black = Model({.emissivity = 0.0f}), unset;  // whose limits are all 0
    EXPECT_EQ(black.getK1(), 0.0);
    EXPECT_TRUE(black.objectSignalToImg(5.0, &status) == 65535 && status == 4);  // as a pow of 100000
    EXPECT_TRUE(unset.imgToTemp(u16{9000}, &status, Kelvin) == 0.0 && status == 4);
    EXPECT_TRUE(unset.imgToTemp(u16{0}, &status, Kelvin) == 0.0 && status == 34);
}

TEST(TrnMeasConv, WarmthOfTheCameraIsCompensatedOnlyWhereItCanBe) {
    const _imageinfo_t good{303.0f, 300.0f, 80.0f};
    const _imageinfo_t bad[] = {
        {303.0f, 0.0f, 80.0f}, {0.0f, 300.0f, 80.0f}, {-5.0f, 300.0f, 80.0f}, {430.0f, 300.0f, 80.0f}};
    CTrnMeasConv model = Model({}, true);
    const double gain = model.getTdrGain(), offset = model.getTrdOffset();
    EXPECT_NEAR(gain, 1 / (1 - 0.1 * (std::exp(0.06) - 1)), 1e-6);
    EXPECT_NEAR(offset, 95 - 0.01 * 2e8 / (std::exp(11) - 1) - 0.02 * 2e8 / (std::exp(3300 / 303.0) - 1) + 1.5, 1e-4);
    const double limit = model.getPowOverflow();
    for (const _imageinfo_t& info : bad) {
        model.UpdateFromTempSens(&info);
        EXPECT_TRUE(model.getTdrGain() == 1.0 && model.getTrdOffset() == 0.0);
        model.UpdateFromTempSens(&good);
        EXPECT_TRUE(model.getTdrGain() == gain && model.getTrdOffset() == offset);
    }
    EXPECT_EQ(model.getPowOverflow(), limit);
    // Without an end of its calibration the highest count is the limit; it takes a setter to follow the compensation.
    model.setClipOn(false);
    ExpectClose(model.getPowOverflow(), (65535 * gain + offset - 300) * double{1.1f}, 1e-13);
    model.setCalibPar(nullptr);
    model.UpdateFromTempSens(&good);
    EXPECT_EQ(model.getTdrGain(), 1.0);
    CTrnMeasConv off = Model({});
    off.UpdateFromTempSens(&good);
    EXPECT_EQ(off.getTdrGain(), 1.0);
}

TEST(TrnMeasConv, BuffersOfAllTypesDoAsTheSingleValues) {
    const CTrnMeasConv model = Model({.emissivity = 0.9f});
    constexpr u32 kCount = 1025;  // over two blocks
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
        std::vector<S> in(kCount);
        for (u32 i = 0; i < kCount; ++i) in[i] = static_cast<S>(sizeof(S) == 1 ? i % 128 : i * 15);
        const auto check = [&](const auto& convert, const auto& single, double tolerance) {
            std::vector<D> out(kCount + 1, D{77});
            std::vector<u8> status(kCount + 1, 99);
            convert(STypedData{out.data(), DataTypeOf<D>()}, STypedData{in.data(), DataTypeOf<S>()}, status.data());
            for (u32 i = 0; i < kCount; i += 31) {
                u8 flags = 0;
                const double expected = single(static_cast<u16>(in[i]), &flags);
                if constexpr (std::is_floating_point_v<D>) {
                    EXPECT_NEAR(out[i], expected, tolerance) << i;
                } else {
                    EXPECT_EQ(out[i], static_cast<D>(static_cast<i64>(expected))) << i;  // truncated, low bits kept
                }
                EXPECT_EQ(status[i], flags) << i;
            }
            EXPECT_EQ(out[kCount], D{77});
            EXPECT_EQ(status[kCount], 99);
        };
        check([&](auto... buffers) { model.imgToTemp(buffers..., kCount, Fahrenheit); },
              [&](u16 img, u8* flags) { return model.imgToTemp(img, flags, Fahrenheit); }, 1e-4);
        check([&](auto... buffers) { model.imgToRad(buffers..., kCount); },
              [&](u16 img, u8* flags) { return model.imgToRad(img, flags); }, 1e-7);
        check([&](auto... buffers) { model.imgToObjectSignal(buffers..., kCount); },
              [&](u16 img, u8* flags) { return model.imgToObjectSignal(img, flags); }, 1e-3);
    });
}

TEST(TrnMeasConv, TypedInputIsLimitedTo14BitsAndTruncated) {
    const CTrnMeasConv model = Model({.emissivity = 0.9f});
    const struct {
        double in;
        u16 as;
    } kCases[] = {{9000.9, 9000}, {0.9, 0},         {0, 0},         {-5, 0},
                  {kNaN, 0},      {16383.5, 16383}, {40000, 16383}, {1e300, 16383}};
    double in[std::size(kCases)], out[std::size(kCases)], plain[std::size(kCases)];
    u8 status[std::size(kCases)];
    for (u32 i = 0; i < std::size(kCases); ++i) in[i] = kCases[i].in;
    model.imgToTemp({out, Flt64}, {in, Flt64}, status, std::size(kCases), kNoScale);  // kelvin
    model.imgToTemp({plain, Flt64}, {in, Flt64}, nullptr, std::size(kCases), kNoScale);
    for (u32 i = 0; i < std::size(kCases); ++i) {
        u8 flags = 0;
        EXPECT_EQ(out[i], model.imgToTemp(kCases[i].as, &flags, Kelvin)) << i;
        EXPECT_EQ(status[i], flags) << i;
        EXPECT_EQ(plain[i], out[i]) << i;
    }
    EXPECT_EQ(status[1], 34);
    // Neither of these touches anything.
    model.imgToTemp({out, Opaque}, {in, Flt64}, status, 1, Celsius);
    model.imgToTemp({out, Flt64}, {in, NoPixels}, status, 1, Celsius);
    EXPECT_EQ(out[0], plain[0]);
    EXPECT_EQ(status[0], 0);
}

TEST(TrnMeasConv, TablesAreTheFormulaAtEveryEntry) {
    CTrnMeasConv model = Model({.emissivity = 0.8f});
    std::vector<u16> in(16385);
    std::iota(in.begin(), in.end(), u16{0});
    std::vector<float> out(16385, -1.0f), radiance(16385), signal(16385);
    std::vector<u8> status(16385, 99);
    const STypedData counts{in.data(), UInt16}, to{out.data(), Flt32};
    model.imgToTempLUT(to, counts, status.data(), 16385, Kelvin);
    EXPECT_EQ(out[9000], 273.15f);  // nothing was built
    model.updateLUT();
    for (const auto& [scale, factor, offset] : kScaleSteps) {
        model.imgToTempLUT(to, counts, status.data(), 16385, scale);
        std::vector<float> range(16385);
        std::vector<u8> flags(16385);
        model.imgToTemp(0, 16384, range.data(), flags.data(), scale);
        for (u32 i = 0; i < 16384; ++i) {
            ASSERT_NEAR(out[i], range[i], 1e-4) << i;
            ASSERT_EQ(status[i], flags[i]) << i;
        }
        EXPECT_EQ(out[16384], out[16383]);
    }
    model.imgToTempLUT(to, counts, status.data(), 16385, kNoScale);  // that of the table
    EXPECT_NEAR(out[9000], model.imgToTemp(u16{9000}, nullptr, Celsius), 1e-4);
    model.imgToObjectSignalLUT({signal.data(), Flt32}, counts, nullptr, 16385);
    model.imgToRadLUT({radiance.data(), Flt32}, counts, nullptr, 16385);
    model.imgToObjectSignal(0, 16384, out.data(), status.data());
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + 16384, signal.begin()));
    model.imgToRad(0, 16384, out.data(), nullptr);
    for (u32 i = 0; i < 16384; ++i) ASSERT_NEAR(radiance[i], out[i], 1e-6 * out[i]) << i;

    // Elements that name the model by a map, or by a map at an index.
    CTrnMeasConv models[] = {model, CTrnMeasConv(), Model({.emissivity = 0.6f})};
    models[2].updateLUT();
    const u8 map[] = {2, 0, 1, 0};
    const u32 indices[] = {3, 0, 2};
    u16 pixels[] = {9000, 9001, 9002};
    float mapped[3], listed[3];
    CTrnMeasConv::imgToObjectSignalLUT(models, {mapped, Flt32}, {pixels, UInt16}, map, status.data(), 3);
    CTrnMeasConv::imgToObjectSignalLUT(models, {listed, Flt32}, {pixels, UInt16}, indices, map, nullptr, 3);
    const auto of = [&](int which, u16 img) {
        return static_cast<float>(models[which].imgToObjectSignal(img, nullptr));
    };
    EXPECT_TRUE(mapped[0] == of(2, 9000) && mapped[1] == of(0, 9001) && mapped[2] == 0.0f && status[2] == 0);
    EXPECT_TRUE(listed[0] == of(0, 9000) && listed[1] == of(2, 9001) && listed[2] == 0.0f);
    CTrnMeasConv::imgToTempLUT(models, {mapped, Flt32}, {pixels, UInt16}, nullptr, status.data(), 3, Celsius);
    CTrnMeasConv::imgToRadLUT(models, {listed, Flt32}, {pixels, UInt16}, indices, nullptr, nullptr, 3);
    EXPECT_NEAR(mapped[2], model.imgToTemp(u16{9002}, nullptr, Celsius), 1e-4);
    EXPECT_EQ(listed[2], radiance[9002]);
}

TEST(TrnMeasConv, RadianceThereAndBack) {
    const auto band = [](double celsius) { return BandRadiance(celsius, 3, 5); };
    EXPECT_NEAR(CTrnMeasConv::tempToRad(30.0f), band(30.0), 2e-4 * band(30.0));
    CTrnMeasConv model = Model(kPlainScene);
    const double range = band(70) - band(-10);
    double before = 0;
    for (u16 img = 1500; img < 14000; img = static_cast<u16>(img + 100)) {
        const double radiance = model.imgToRad(img, nullptr);
        EXPECT_NEAR(radiance, band(model.imgToTemp(img, nullptr, Celsius)), 0.01 * range) << img;
        EXPECT_GT(radiance, before);
        before = radiance;
        u8 status = 99;
        EXPECT_NEAR(model.radToImg(radiance, &status), img, 150) << img;  // two fits, not one and its inverse
        EXPECT_EQ(status, 0);
    }
    // A fit that cannot be made leaves both ways as they were.
    const double radiance = model.imgToRad(u16{9000}, nullptr);
    const u16 img = model.radToImg(radiance, nullptr);
    _cal_param_t bad = *model.CalibPar();
    bad.radFitHighTemp = bad.radFitLowTemp + 0.9f;  // two points
    model.setCalibPar(&bad);
    EXPECT_FALSE(model.InitRad(1e8, 3000, 1));
    EXPECT_EQ(model.imgToRad(u16{9000}, nullptr), radiance);
    EXPECT_EQ(model.radToImg(radiance, nullptr), img);
}

TEST(TrnMeasConv, UnknownScalesAreKelvin) {
    const CTrnMeasConv model = Model({});
    float out[2];
    model.imgToTemp(9000, 9001, out, nullptr, kNoScale);
    EXPECT_EQ(out[1], static_cast<float>(model.imgToTemp(u16{9001}, nullptr, Kelvin)));
    const u16 img = model.tempToImg(300.0, nullptr, Kelvin);
    EXPECT_EQ(model.tempToImg(300.0, nullptr, kNoScale), img);
    for (const auto& [scale, factor, offset] : kScaleSteps) {
        EXPECT_EQ(model.tempToImg(300.0 * factor - offset, nullptr, scale), img);
    }
    model.imgToTemp(9, 8, out, nullptr, Kelvin);
    EXPECT_GT(out[0], 0.0f);
}

}  // namespace
}  // namespace ovix::reduce
