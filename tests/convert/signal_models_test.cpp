#include <numeric>
#include <span>
#include <vector>

#include "support/cameras.h"
#include "support/simd_targets.h"

/// What the measurement models of the three families have in common: the way of a count to a temperature and back.
namespace ovix::reduce {
namespace {

using namespace test;

struct SCurlew {
    using Reference = CCurlewReference;
    static constexpr u32 kSignals = 65536, kScales = 4;  // it leaves alone what has an unknown one
    static constexpr u8 kNoData = 34;
    static constexpr double kPrecision = 1e-11, kCounts = 0.51;
    static std::vector<CCurlewCal> Cameras() {
        std::vector<CCurlewCal> cameras(2, CurlewCamera());
        cameras[1].planckF = 1.3f;
        return cameras;
    }

    static double Signal(const CMeasConv& m, i32 count, u8* status) { return m.imgToObjectSignal(count, status); }
    static double Kelvin(const CMeasConv& m, i32 count) { return m.imgToTemp(count, nullptr); }
    static u16 Count(const CMeasConv& m, double kelvin) { return m.tempToImg(kelvin); }
    static void Range(const CMeasConv& m, auto... arguments) { m.imgToTemp(arguments...); }
    static void Buffer(const CMeasConv& m, const u16* in, u32 count, float* out, u8* status, ETempType scale) {
        m.imgToTemp(out, in, status, count, scale);
    }
    static void Radiances(const CMeasConv& m, auto... arguments) { m.imgToRadiance(arguments...); }
};

struct STern {
    using Reference = CTernReference;
    static constexpr u32 kSignals = 16384, kScales = 5;
    static constexpr u8 kNoData = 34;
    static constexpr double kPrecision = 1e-11, kCounts = 0.51;
    static std::vector<CTernCal> Cameras() { return {TernCamera(false), TernCamera(true)}; }

    static double Signal(const CTrnMeasConv& m, i32 count, u8* status) {
        return m.imgToObjectSignal(static_cast<u16>(count), status);
    }
    static double Kelvin(const CTrnMeasConv& m, i32 count) { return m.imgToTemp(count, nullptr); }
    static u16 Count(const CTrnMeasConv& m, double kelvin) { return m.tempToImg(kelvin); }
    static u16 Count(const CTrnMeasConv& m, double value, ETempType scale) {
        return m.tempToImg(value, nullptr, scale);
    }
    static void Range(const CTrnMeasConv& m, auto... arguments) { m.imgToTemp(arguments...); }
    static void Buffer(const CTrnMeasConv& m, const u16* in, u32 count, float* out, u8* status, ETempType scale) {
        m.imgToTemp({out, Flt32}, {const_cast<u16*>(in), UInt16}, status, count, scale);
    }
    static void Radiances(const CTrnMeasConv& m, auto... arguments) { m.imgToRad(arguments...); }
};

struct SMerlin {
    using Reference = CMerlinReference;
    static constexpr u32 kSignals = 65536, kScales = 5;
    static constexpr u8 kNoData = 2;
    static constexpr double kPrecision = 2e-7, kCounts = 1.01;  // the linear forms truncate on the way back
    static std::vector<CMerlinCal> Cameras() {
        return {MerlinCamera(1), MerlinCamera(-1), MerlinCamera(-2), MerlinCamera(2), MerlinCamera(5)};
    }

    static double Signal(const CMrlConv& m, i32 count, u8* status) {
        return m.SignalToRadiance(static_cast<u16>(count), status);
    }
    static double Kelvin(const CMrlConv& m, i32 count) {
        return m.SignalToTemperature(static_cast<u16>(count), nullptr, ovix::Kelvin);
    }
    static u16 Count(const CMrlConv& m, double value, ETempType scale = ovix::Kelvin) {
        return m.TemperatureToSignal(static_cast<float>(value), nullptr, scale);
    }
    static void Range(const CMrlConv& m, auto... arguments) { m.SignalToTemperature(arguments...); }
    static void Buffer(const CMrlConv& m, const u16* in, u32 count, float* out, u8* status, ETempType scale) {
        m.SignalToTemperature(in, out, status, count, scale);
    }
};

template <class Family>
class SignalModel : public ::testing::Test {};
using Families = ::testing::Types<SCurlew, STern, SMerlin>;
TYPED_TEST_SUITE(SignalModel, Families);

TYPED_TEST(SignalModel, FollowsTheFormulasInEveryScene) {
    const SScene scenes[] = {
        {},
        kPlainScene,
        {.emissivity = 0.7f, .distance = 10.0f, .reflectedTemp = 280.0f},
        {.emissivity = 0.95f, .distance = 150.0f, .atmosphereTemp = 278.149994f, .relativeHumidity = 0.8f},
        {.emissivity = 0.9f, .extOpticsTemp = 300.0f, .extOpticsTrans = 0.85f, .atmosphereTrans = 0.97f},
        {.emissivity = 0.9f, .extOpticsTemp = 500.0f, .extOpticsTrans = 1.0f},  // transparent optics do not glow
        {.emissivity = 0.8f, .distance = 3.0f, .extOpticsTrans = 0.8f, .relativeHumidity = 0.0f},
    };
    const auto cameras = TypeParam::Cameras();
    for (std::size_t i = 0; i < std::size(scenes) * cameras.size(); ++i) {
        SCOPED_TRACE("scene " + std::to_string(i % 7) + ", camera " + std::to_string(i / 7));
        const auto model = ModelOf(cameras[i / 7], scenes[i % 7]);
        const typename TypeParam::Reference reference(cameras[i / 7], scenes[i % 7]);
        ExpectClose(model.getUsedAtmTao(), reference.tau, 1e-13);
        if constexpr (requires { model.getK1(); }) {
            ExpectClose(model.getK1(), reference.K1, 1e-13);
            ExpectClose(model.getK2(), reference.K2, 1e-12);
            ExpectClose(model.getPowOverflow(), reference.overflow, 1e-12);
            ExpectClose(model.getPowUnderflow(), reference.underflow, 1e-12);
        }
        const auto kelvinOf = [&](u32 count) { return TypeParam::Kelvin(model, count); };
        double before = 0;
        for (u32 count = 0; count < TypeParam::kSignals; count += 101) {
            int expected = 0;
            u8 status = 99;
            const Real signal = reference.ObjectSignal(static_cast<int>(count), expected);
            ExpectClose(TypeParam::Signal(model, count, &status), signal, TypeParam::kPrecision);
            EXPECT_EQ(status, expected) << count;
            ExpectClose(kelvinOf(count), reference.Kelvin(signal), TypeParam::kPrecision);
            // Where the surroundings alone give more than was seen there is no temperature.
            EXPECT_TRUE(kelvinOf(count) > before || kelvinOf(count) == 0 || expected & 6) << count;
            before = kelvinOf(count);
        }
        const double lowest = static_cast<double>(reference.KelvinAt(reference.lower)) + 0.1;
        for (double kelvin = std::max(lowest, 250.0); kelvin < reference.KelvinAt(reference.upper); kelvin += 0.37) {
            const u16 count = TypeParam::Count(model, kelvin);
            const double found = kelvinOf(count), step = kelvinOf(count + 1u) - found;
            EXPECT_NEAR(found, kelvin, TypeParam::kCounts * step) << count;
        }
    }
}

TYPED_TEST(SignalModel, AllFormsOnAllProcessorsGiveTheBitsOfTheSingleValues) {
    constexpr u32 kSignals = TypeParam::kSignals;
    // A frame of few values goes through a table that is made in the call, one of many does not.
    std::vector<u16> few(5000), many(kSignals);
    for (u32 i = 0; i < few.size(); ++i) few[i] = static_cast<u16>(9000 + i * i % 2500);
    std::iota(many.begin(), many.end(), u16{0});
    for (const auto& camera : TypeParam::Cameras()) {
        const auto model = ModelOf(camera, {.emissivity = 0.8f});
        std::vector<double> kelvin(kSignals);
        std::vector<u8> flags(kSignals);
        for (u32 i = 0; i < kSignals; ++i) {
            kelvin[i] = TypeParam::Kelvin(model, i);
            TypeParam::Signal(model, i, &flags[i]);
        }
        flags[0] = TypeParam::kNoData;
        for (const SScaleStep& step : std::span(kScaleSteps).first(TypeParam::kScales)) {
            const auto check = [&](const std::vector<u16>& in, u32 count, const auto& convert) {
                std::vector<float> out(count + 1, -1.0f);
                std::vector<u8> status(count + 1, 99);
                convert(out.data(), status.data());
                for (u32 i = 0; i < count; ++i) {
                    const float expected = static_cast<float>(kelvin[in[i]] * step.factor - step.offset);
                    ASSERT_TRUE(out[i] == expected && status[i] == flags[in[i]]) << in[i] << " of " << count;
                }
                EXPECT_TRUE(out[count] == -1.0f && status[count] == 99);
            };
            const auto range = [&](u16 first, u16 last) {
                return [=, &model](auto... out) { TypeParam::Range(model, first, last, out..., step.scale); };
            };
            check(many, kSignals, range(0, static_cast<u16>(kSignals - 1)));
            check(many, 0, range(9, 8));
            ForEachTarget([&] {
                for (const std::vector<u16>& in : {few, many}) {
                    for (const u32 count : {0u, 1u, 513u, static_cast<u32>(in.size())}) {
                        check(in, count,
                              [&](auto... out) { TypeParam::Buffer(model, in.data(), count, out..., step.scale); });
                    }
                }
            });
            if constexpr (requires { TypeParam::Count(model, 0.0, step.scale); }) {
                EXPECT_EQ(TypeParam::Count(model, 300 * step.factor - step.offset, step.scale),
                          TypeParam::Count(model, 300));
            }
        }
    }
}

template <class Family>
class FittedModel : public ::testing::Test {};
using FittedFamilies = ::testing::Types<SCurlew, STern>;
TYPED_TEST_SUITE(FittedModel, FittedFamilies);

TYPED_TEST(FittedModel, RadianceIsThatOfTheBand) {
    constexpr bool kLongWave = std::is_same_v<TypeParam, SCurlew>;
    const auto band = [](double celsius) { return BandRadiance(celsius, kLongWave ? 8 : 3, kLongWave ? 12 : 5); };
    auto model = ModelOf(TypeParam::Cameras()[0], kPlainScene);
    EXPECT_NEAR(model.tempToRad(30.0f), band(30.0), 2e-4 * band(30.0));
    EXPECT_FALSE(decltype(model)().InitRad(18000, 1450, 1));
    // Fits that cannot be made leave the last one, and so does a change of calibration.
    const auto good = *model.CalibPar();
    auto bad = good;
    for (const auto& [low, high] : {std::pair{300.0f, 300.9f}, {300.0f, 290.0f}, {-10.0f, 300.0f}, {300.0f, 1e30f}}) {
        bad.radFitLowTemp = low, bad.radFitHighTemp = high;
        model.setCalibPar(&bad);
        EXPECT_FALSE(model.InitRad(17000, 1400, 1)) << low << " to " << high;
        EXPECT_TRUE(model.InitRad(good.planckR, good.planckB, good.planckF));
    }
    const double range = band(good.upperTemp - 273.15) - band(good.lowerTemp - 273.15);
    float radiance = 0, before = 0;
    for (u32 img = 1; img < TypeParam::kSignals - 1; img += 100) {
        const u16 count = static_cast<u16>(img);
        u8 status = 99;
        TypeParam::Radiances(model, count, count, &radiance, &status);
        if (status) continue;
        EXPECT_NEAR(radiance, band(TypeParam::Kelvin(model, count) - 273.15), 0.01 * range) << count;
        EXPECT_GT(radiance, before);
        before = radiance;
        if constexpr (!kLongWave) {
            EXPECT_NEAR(model.radToImg(radiance, &status), count, 150);  // two fits, not one and its inverse
            EXPECT_EQ(status, 0);
        }
    }
    EXPECT_GT(before, 0.0f);
    bad.radFitLowTemp = -0.9f, bad.radFitHighTemp = 300.0f;  // -274 whole degrees is the last that counts
    model.setCalibPar(&bad);
    EXPECT_TRUE(model.InitRad(17000, 1400, 1));
}

}  // namespace
}  // namespace ovix::reduce
