#pragma once

#include "source_files.h"

/// A camera that goes through its presets in turn, with frames of four counts and then their preset. One of preset 200
/// or more is damaged in its metadata, one of preset 100 to 199 in its pixels: that shows when it is decoded.
namespace ovix::test {

inline constexpr u32 kTurningPixels = 4;
inline constexpr const char* kTurning = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}";
inline constexpr double kRadiancePerCount = 1e-6;

class CTurningFilter : public reduce::IFilter {
  public:
    static constexpr GUID kType = reduce::frame_types::kF7M0;

    static bool Register() {
        using Functions = TCreateAndDestroy<CTurningFilter, reduce::IFilter>;
        const auto check = [](const void* frame, GUID, u16, u16, u32 size, reduce::SFrameFault*) {
            return size > 2 * kTurningPixels && static_cast<const u8*>(frame)[2 * kTurningPixels] < 200;
        };
        const auto form = [](GUID type, reduce::SFrameForm& of) {
            return of = reduce::SFrameForm::OfCounts(type), true;
        };
        TArray<GUID> types{kType};
        return reduce::filterFactory()->Register(L"Turning", types, Functions::Create, Functions::Destroy,
                                                 {.check = check, .form = form});
    }
    const wchar_t* GetName() const override { return L"Turning"; }
    bool HasPixels(GUID) const override { return true; }
    bool GetPixels(void* frame, GUID, u16, u16, u32, void** pixels, i32& stride) override {
        *pixels = frame;
        stride = 4;
        return true;
    }
    bool ParseFrame(void* frame, GUID, u16, u16, u32, STypedData dest, reduce::CReduceObjectArray&,
                    u8& preset) override {
        const u8 told = static_cast<u8*>(frame)[2 * kTurningPixels];
        preset = told % 100;
        if (dest.data && told < 100) std::memcpy(dest.data, frame, 2 * kTurningPixels);
        return !dest.data || told < 100;
    }
    bool ParseTime(void*, GUID, u16, u16, u32, CDateTime&) override { return false; }
    bool ParseBasicInfo(void*, GUID, u16, u16, u32, u8&, u64&, CDateTime&) override { return false; }
};

struct STurningFrame {
    u8 preset = 0;
    std::array<u16, kTurningPixels> counts = {};
};

inline Bytes TurningDump(const std::vector<STurningFrame>& frames) {
    Bytes bytes;
    for (const STurningFrame& frame : frames)
        bytes = bytes + PixelBytes({frame.counts.begin(), frame.counts.end()}) + Bytes{frame.preset};
    return bytes;
}

class CTurningDump {
  public:
    explicit CTurningDump(const std::vector<STurningFrame>& frames) : source_(Make(frames)) {}
    const measure::CSource& Source() const { return source_; }

  private:
    measure::CSource Make(const std::vector<STurningFrame>& frames) const {
        static const bool registered = CTurningFilter::Register();
        EXPECT_TRUE(registered);
        return measure::Open(folder_.Put("turning", TurningDump(frames)),
                             {.pixelType = kTurning, .width = 2, .height = 2, .frameSize = 2 * kTurningPixels + 1});
    }

    CTestFolder folder_;
    measure::CSource source_;
};

/// A user calibration of presets 0 and 1: a count of preset 1 is worth four of preset 0.
inline measure::SMeasureOptions TurningRadiance(int presets = 2) {
    measure::SMeasureOptions options{.quantity = measure::EQuantity::Radiance, .userCalibration = CRCalFile()};
    options.userCalibration->SetBandpass(3, 5);
    options.userCalibration->SetPolynomial(0, 1, {0, kRadiancePerCount});
    if (presets > 1) options.userCalibration->SetPolynomial(1, 1, {0, 4 * kRadiancePerCount});
    return options;
}

}  // namespace ovix::test
