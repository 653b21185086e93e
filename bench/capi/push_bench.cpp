#include <ovix.h>

#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"
#include "bench/support/data.h"
#include "measure/measure.h"

/// Frames in memory to temperatures: through the C interface, and by the loop of the measuring layer that does the
/// same.
namespace ovix::bench {

namespace {

constexpr u32 kFrames = 16;
constexpr const char* kType = "K410 IR (GigE)";

struct SPushed {
    explicit SPushed(const SRun& run) {
        const GUID type = measure::FindPixelType(kType);
        const auto camera =
            app::FindSynthFamily(type)->make({.type = type, .form = {}, .width = run.width, .height = run.height});
        for (u32 i = 0; i < kFrames; ++i)
            frames.push_back(camera->Frame(i, app::RenderScene(run.width, run.height, i)));
        ovix_options options{};
        options.size = sizeof options;
        options.pixel_type = kType;
        options.width = run.width;
        options.height = run.height;
        options.quantity = OVIX_TEMPERATURE;
        if (ovix_open_stream(&options, &stream)) std::abort();
        measurement.emplace(
            measure::PushedFrames("stream", {.pixelType = kType, .width = run.width, .height = run.height}),
            measure::SMeasureOptions{.quantity = measure::EQuantity::Temperature});
    }
    SPushed(const SPushed&) = delete;
    SPushed& operator=(const SPushed&) = delete;
    ~SPushed() { ovix_close(stream); }

    void Push() {
        for (const std::vector<u8>& bytes : frames) {
            last.size = sizeof last;
            if (ovix_push(stream, bytes.data(), bytes.size(), &last)) std::abort();
        }
    }
    void Measure() {
        for (const std::vector<u8>& bytes : frames) {
            raw.bytes.assign(bytes.begin(), bytes.end());
            measurement->Measure(raw, frame);
        }
    }

    std::vector<std::vector<u8>> frames;
    ovix_source* stream = nullptr;
    ovix_frame last{};
    std::optional<measure::CMeasurement> measurement;
    measure::SRawFrame raw;
    measure::CFrame frame;
};

SKernel Pushed(const char* name, void (SPushed::*way)(), std::string beside = {}, double most = 0) {
    return {.name = name,
            .bytesPerPixel = 7,
            .make =
                [way](const SRun& run) {
                    const auto data = std::make_shared<SPushed>(run);
                    return SJob{[=](u32) { (data.get()->*way)(); },
                                [=] {
                                    data->Push();
                                    data->Measure();
                                    const std::span pushed(data->last.values, run.Pixels());
                                    return FirstDifference(std::vector(pushed.begin(), pushed.end()),
                                                           data->frame.values);
                                }};
                },
            .beside = std::move(beside),
            .mostBeside = most,
            .times = 15,
            .calls = kFrames};
}

const CKernelEntry kLoop(Pushed("A frame in memory, in C++", &SPushed::Measure));
const CKernelEntry kPush(Pushed("A frame pushed through C", &SPushed::Push, "A frame in memory, in C++", 1.15));

}  // namespace

}  // namespace ovix::bench
