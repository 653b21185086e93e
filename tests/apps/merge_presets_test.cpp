// Frames of a camera that goes through its presets in turn, merged and converted.

#include <gtest/gtest.h>

#include <cstring>

#include "apps/ovix/cli/measure_loop.h"
#include "reduce/reduce.h"

namespace ovix::app {
namespace {

constexpr u32 kPixels = 4;
constexpr double kRadiancePerCount = 1e-6;
constexpr GUID kType = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}"_guid;  // plain 16-bit counts

/// A camera whose frames are four counts and then their preset.
class CTurningFilter : public reduce::IFilter {
  public:
    const wchar_t* GetName() const override { return L"Turning"; }
    bool HasPixels(GUID) const override { return true; }
    bool GetPixels(void* frame, GUID, u16, u16, u32, void** pixels, i32& stride) override {
        *pixels = frame;
        stride = 4;
        return true;
    }
    bool ParseFrame(void* frame, GUID, u16, u16, u32, STypedData dest, reduce::CReduceObjectArray&,
                    u8& preset) override {
        preset = static_cast<u8*>(frame)[2 * kPixels];
        if (dest.data) std::memcpy(dest.data, frame, 2 * kPixels);
        return true;
    }
    bool ParseTime(void*, GUID, u16, u16, u32, CDateTime&) override { return false; }
    bool ParseBasicInfo(void*, GUID, u16, u16, u32, u8&, u64&, CDateTime&) override { return false; }
    static bool Check(const void* frame, GUID, u16, u16, u32, reduce::SFrameFault*) {
        return static_cast<const u8*>(frame)[2 * kPixels] < 8;
    }
    static bool Form(GUID type, reduce::SFrameForm& form) {
        form = reduce::SFrameForm::OfCounts(type);
        return true;
    }
};

struct SFrame {
    u8 preset;
    std::array<u16, kPixels> counts;
};

/// Preset 1 has a gain of 2 and an offset of 1.
class CTurningSource : public IFrameSource {
  public:
    explicit CTurningSource(std::vector<SFrame> frames) : frames_(std::move(frames)) {
        using Functions = TCreateAndDestroy<CTurningFilter, reduce::IFilter>;
        reduce::filterFactory()->Register(L"Turning", {}, Functions::Create, Functions::Destroy,
                                          {.check = CTurningFilter::Check, .form = CTurningFilter::Form});
    }
    const std::string& Name() const override { return name_; }
    const SFrameFormat& Format() const override { return format_; }
    u64 Count() const override { return frames_.size(); }
    u64 FrameSize() const override { return 2 * kPixels + 1; }
    void Read(u64 index, std::vector<u8>& frame) override {
        frame.resize(2 * kPixels + 1);
        std::memcpy(frame.data(), frames_[index].counts.data(), 2 * kPixels);
        frame.back() = frames_[index].preset;
    }
    void Describe(reduce::CReduceObjectArray& objects) const override {
        objects.Empty();
        objects.GetSourceInfo(true)->baseUnit = Counts;
        const auto scene = objects.GetObjectParameters(true);
        scene->emissivity = scene->atmosphereTrans = 1;
        const auto correction = objects.GetCorrection(1, true);
        correction->Create(2, 2, 1, reduce::CorrectionGain | reduce::CorrectionOffset);
        for (u32 i = 0; i < kPixels; ++i) correction->gain[i] = 2, correction->offset[i] = 1;
        correction->valid = true;
    }

  private:
    std::string name_ = "turning";
    SFrameFormat format_{.filter = "Turning", .pixelType = kType, .pixelTypeName = "turning", .width = 2, .height = 2};
    std::vector<SFrame> frames_;
};

/// A count of preset 1 is worth four of preset 0.
SMeasureOptions Options(int presets) {
    SMeasureOptions options;
    options.quantity = EQuantity::Radiance;
    options.userCalibration.emplace();
    options.userCalibration->SetBandpass(3, 5);
    options.userCalibration->SetPolynomial(0, 1, {0, kRadiancePerCount});
    if (presets > 1) options.userCalibration->SetPolynomial(1, 1, {0, 4 * kRadiancePerCount});
    return options;
}

struct SResult {
    u64 number;
    std::vector<double> counts;  ///< that preset 0 would have given
};

TEST(MergePresets, EachCycleOfPresetsIsOneFrame) {
    CTurningSource source({{0, {100, 15000, 15001, 16000}},
                           {1, {10, 2000, 2000, 16000}},
                           {0, {1, 2, 3, 4}},
                           {9, {}},  // damaged
                           {1, {5, 6, 7, 8}},
                           {1, {100, 200, 300, 400}},
                           {0, {20000, 20000, 9, 9}},
                           {0, {15002, 1, 2, 3}}});
    CMeasurement measurement(source, Options(2));
    CFrameLoop frames(CFrameSelection().Of(source.Count()), EOnError::Skip);
    CMeasureLoop loop(frames, source, measurement, true);
    EXPECT_EQ(loop.Count(), 4u);
    std::vector<SResult> results;
    loop.Run([&](const SMeasuredFrame& frame) {
        results.push_back({frame.number, {}});
        for (const float value : frame.values) results.back().counts.push_back(value / kRadiancePerCount);
        EXPECT_EQ(std::vector<u8>(frame.status.begin(), frame.status.end()), std::vector<u8>(kPixels));
    });
    // Above 15,000 counts the next preset is taken, corrected; the last of a cycle whatever it counts.
    const std::vector<SResult> expected = {{0, {100, 15000, 4 * 4001, 4 * 16383}},
                                           {2, {1, 2, 3, 4}},
                                           {5, {4 * 201, 4 * 401, 9, 9}},
                                           {7, {15002, 1, 2, 3}}};
    ASSERT_EQ(results.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(results[i].number, expected[i].number);
        for (u32 p = 0; p < kPixels; ++p)
            EXPECT_NEAR(results[i].counts[p], expected[i].counts[p], 0.01) << i << ' ' << p;
    }
    EXPECT_EQ(loop.Done(), 4u);
    EXPECT_EQ(frames.Skipped(), 1u);
}

TEST(MergePresets, ACycleIsAsGoodAsItsFrames) {
    CTurningSource source({{0, {1, 2, 3, 4}}, {1, {5, 6, 7, 8}}, {0, {1, 2, 3, 4}}});
    CMeasurement measurement(source, Options(1));  // nothing is known of preset 1
    CFrameLoop frames(CFrameSelection().Of(source.Count()), EOnError::Skip);
    CMeasureLoop loop(frames, source, measurement, true);
    std::vector<u64> numbers;
    loop.Run([&](const SMeasuredFrame& frame) { numbers.push_back(frame.number); });
    EXPECT_EQ(numbers, std::vector<u64>{2});
    CFrameLoop two(CFrameSelection("0,1").Of(source.Count()), EOnError::Skip);
    CMeasureLoop none(two, source, measurement, true);
    EXPECT_THROW(none.Run([](const SMeasuredFrame&) { FAIL(); }), CAppError);
}

}  // namespace
}  // namespace ovix::app
