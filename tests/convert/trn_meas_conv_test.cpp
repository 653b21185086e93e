#include "reduce/convert/trn_meas_conv.h"

#include <numeric>

#include "support/cameras.h"
#include "support/pixel_buffers.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

CTrnMeasConv Model(const SScene& scene) { return ModelOf(TernCamera(false), scene); }

TEST(TrnMeasConv, FormsWithACodeAndThoseWithAStatusAgree) {
    const CTrnMeasConv model = Model({});
    for (u16 img = 0; img < 20000; img = static_cast<u16>(img + 53)) {
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

TEST(TrnMeasConv, CountsAndPow) {
    CTrnMeasConv model = Model(kPlainScene);
    _adjust_par_t adjust{2, 0.5f, 1000.0f};
    model.setAdjPar(&adjust);
    const std::pair<int, double> imgs[] = {{0, -1.0}, {-7, -499.5}, {20000, 9500.0}, {70000, 32267.5}};
    for (const auto& [img, pow] : imgs) EXPECT_EQ(model.imgToPow(img), pow);  // 14 bits are no limit here
    const std::pair<double, int> pows[] = {{-1.0, 0},    {1000.2, 3000}, {1000.3, 3001}, {-499.9, 1},  {-500.8, 65535},
                                           {1e9, 65535}, {1e300, 65535}, {kNaN, 65535},  {-1e9, 65535}};
    for (const auto& [pow, img] : pows) EXPECT_EQ(model.powToImg(pow), img) << pow;
    // An object signal is a pow here: K1 is 1, K2 0.
    const std::tuple<double, int, int> signals[] = {
        {-1.0, 0, 32},      {1000.2, 3000, 0},   {1000.3, 3001, 0},   {-499.5, 1, 0}, {-500.0, 1, 2}, {-500.2, 1, 2},
        {-500.3, 65535, 4}, {32267.5, 65535, 0}, {32267.8, 65535, 4}, {1e300, 1, 2},  {kNaN, 1, 2}};
    u8 status = 99;
    for (const auto& [signal, img, flags] : signals) {
        EXPECT_EQ(model.objectSignalToImg(signal, &status), img) << signal;
        EXPECT_EQ(status, flags) << signal;
        EXPECT_EQ(model.objectSignalToImg(signal, nullptr), img);
    }
    adjust.mode = 1;
    model.setAdjPar(&adjust);
    EXPECT_TRUE(model.imgToPow(3000) == 3000.0 && model.powToImg(3000.4) == 3000);
    model.setAdjPar(nullptr);
    EXPECT_EQ(model.AdjPar()->mode, 0u);

    const CTrnMeasConv black = Model({.emissivity = 0.0f}), unset;  // whose limits are all 0
    EXPECT_EQ(black.getK1(), 0.0);
    EXPECT_TRUE(black.objectSignalToImg(5.0, &status) == 65535 && status == 4);  // as a pow of 100000
    EXPECT_TRUE(unset.imgToTemp(u16{9000}, &status, Kelvin) == 0.0 && status == 4);
    EXPECT_TRUE(unset.imgToTemp(u16{0}, &status, Kelvin) == 0.0 && status == 34);
}

TEST(TrnMeasConv, WarmthOfTheCameraIsCompensatedOnlyWhereItCanBe) {
    const _imageinfo_t good{303.0f, 300.0f, 80.0f};
    CTrnMeasConv model = ModelOf(TernCamera(), {}), off = Model({});
    const double gain = model.getTdrGain(), offset = model.getTrdOffset(), limit = model.getPowOverflow();
    for (const _imageinfo_t& bad :
         {_imageinfo_t{303.0f, 0.0f, 80.0f}, {0.0f, 300.0f}, {-5.0f, 300.0f}, {430.0f, 300.0f}}) {
        model.UpdateFromTempSens(&bad);
        EXPECT_TRUE(model.getTdrGain() == 1.0 && model.getTrdOffset() == 0.0);
        model.UpdateFromTempSens(&good);
        EXPECT_TRUE(model.getTdrGain() == gain && model.getTrdOffset() == offset);
    }
    EXPECT_EQ(model.getPowOverflow(), limit);
    // Without an end of its calibration the highest count is the limit; it takes a setter to follow the compensation.
    model.setClipOn(false);
    ExpectClose(model.getPowOverflow(), (65535 * gain + offset - 300) * double{1.1f}, 1e-13);
    model.setCalibPar(nullptr);
    for (CTrnMeasConv* without : {&model, &off}) {
        without->UpdateFromTempSens(&good);
        EXPECT_EQ(without->getTdrGain(), 1.0);
    }
}

/// Typed input is truncated and limited to 14 bits; what is not above 0 is no data.
TEST(TrnMeasConv, BuffersOfAllTypesDoAsTheSingleValues) {
    const CTrnMeasConv model = Model({.emissivity = 0.9f});
    constexpr u32 kCount = 1025;  // over two blocks
    u32 seed = 1;
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
        TGuarded<S> in(kCount, 0, false);
        FillEdges(in, seed++);
        for (u32 i = 0; i < kCount; i += 2) in[i] = static_cast<S>(sizeof(S) == 1 ? i % 128 : i * 15);
        const auto check = [&](const auto& convert, const auto& single) {
            TGuarded<D> out(kCount), plain(kCount);
            TGuarded<u8> status(kCount);
            convert(out.Typed(), in.Typed(), status.data(), kCount);
            convert(plain.Typed(), in.Typed(), nullptr, kCount);
            for (u32 i = 0; i < kCount; ++i) {
                u8 flags = 0;
                const u16 img = in[i] > 0 ? static_cast<u16>(std::min<Real>(static_cast<Real>(in[i]), 16383)) : u16{0};
                ASSERT_EQ(out[i], Cast<D>(single(img, &flags))) << i << " of " << +in[i];
                ASSERT_TRUE(plain[i] == out[i] && status[i] == flags) << i << " of " << +in[i];
            }
            EXPECT_TRUE(out.Untouched(kCount) && status.Untouched(kCount));
        };
        check([&](auto... f) { model.imgToTemp(f..., kNoScale); },
              [&](u16 i, u8* s) { return model.imgToTemp(i, s, Kelvin); });
        check([&](auto... f) { model.imgToRad(f...); }, [&](auto... f) { return model.imgToRad(f...); });
        check([&](auto... f) { model.imgToObjectSignal(f...); },
              [&](auto... f) { return model.imgToObjectSignal(f...); });
    });
    // Neither of these touches anything.
    double in = 9000, out = -1;
    u8 status = 99;
    model.imgToTemp({&out, Opaque}, {&in, Flt64}, &status, 1, Celsius);
    model.imgToTemp({&out, Flt64}, {&in, NoPixels}, &status, 1, Celsius);
    EXPECT_TRUE(out == -1 && status == 99);
}

TEST(TrnMeasConv, TablesAreTheFormulaAtEveryEntry) {
    constexpr u32 kCount = 16385;  // the last is limited to the table
    CTrnMeasConv model = Model({.emissivity = 0.8f});
    std::vector<u16> in(kCount);
    std::iota(in.begin(), in.end(), u16{0});
    std::vector<float> out(kCount), range(kCount);
    std::vector<u8> status(kCount), flags(kCount);
    const STypedData counts{in.data(), UInt16}, to{out.data(), Flt32};
    model.imgToTempLUT(to, counts, status.data(), kCount, Kelvin);
    EXPECT_EQ(out[9000], 273.15f);  // nothing was built
    model.updateLUT();
    const auto check = [&](double absolute, double relative) {
        for (u32 i = 0; i < kCount; ++i) {
            const float expected = range[std::min(i, 16383u)];
            ASSERT_NEAR(out[i], expected, absolute + relative * expected) << i;
            ASSERT_EQ(status[i], flags[std::min(i, 16383u)]) << i;
        }
    };
    for (const SScaleStep& step : kScaleSteps) {
        model.imgToTempLUT(to, counts, status.data(), kCount, step.scale);
        // One that is none is that of the table.
        model.imgToTemp(0, 16384, range.data(), flags.data(), step.scale == kNoScale ? Celsius : step.scale);
        check(1e-4, 0);
    }
    model.imgToObjectSignalLUT(to, counts, nullptr, kCount);
    model.imgToObjectSignal(0, 16384, range.data(), nullptr);
    check(0, 0);
    model.imgToRadLUT(to, counts, nullptr, kCount);
    model.imgToRad(0, 16384, range.data(), nullptr);
    check(0, 1e-6);

    // Elements that name the model by a map, or by a map at an index.
    CTrnMeasConv models[] = {model, CTrnMeasConv(), Model({.emissivity = 0.6f})};
    models[2].updateLUT();
    const u8 map[] = {2, 0, 1, 0};
    const u32 indices[] = {3, 0, 2};
    u16 pixels[] = {9000, 9001, 9002};
    float mapped[3], listed[3];
    const STypedData three{pixels, UInt16}, toMapped{mapped, Flt32}, toListed{listed, Flt32};
    CTrnMeasConv::imgToObjectSignalLUT(models, toMapped, three, map, status.data(), 3);
    CTrnMeasConv::imgToObjectSignalLUT(models, toListed, three, indices, map, nullptr, 3);
    const auto of = [&](int which, u16 img) {
        return static_cast<float>(models[which].imgToObjectSignal(img, nullptr));
    };
    EXPECT_TRUE(mapped[0] == of(2, 9000) && mapped[1] == of(0, 9001) && mapped[2] == 0.0f && status[2] == 0);
    EXPECT_TRUE(listed[0] == of(0, 9000) && listed[1] == of(2, 9001) && listed[2] == 0.0f);
    CTrnMeasConv::imgToTempLUT(models, toMapped, three, nullptr, status.data(), 3, Celsius);
    CTrnMeasConv::imgToRadLUT(models, toListed, three, indices, nullptr, nullptr, 3);
    EXPECT_NEAR(mapped[2], model.imgToTemp(u16{9002}, nullptr, Celsius), 1e-4);
    EXPECT_EQ(listed[2], out[9002]);
}

}  // namespace
}  // namespace ovix::reduce
