#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"
#include "bench/support/data.h"
#include "measure/measure.h"

/// Frames of a dump in the system's cache to temperatures: read, checked, decoded, converted by a table, with their
/// status. Times are those of one frame.
namespace ovix::bench {

namespace {

constexpr u32 kFrames = 16;
constexpr GUID kType = reduce::frame_types::kK410GigE;

/// A dump in the folder for temporary files that goes with its owner, and a measurement of its frames.
struct SDump {
    explicit SDump(const SRun& run)
        : path(std::filesystem::temp_directory_path() / ("ovix_series_" + std::to_string(::getpid()))),
          source(Make(run)),
          measurement(source, {.quantity = measure::EQuantity::Temperature}) {}
    SDump(const SDump&) = delete;
    SDump& operator=(const SDump&) = delete;
    ~SDump() { std::filesystem::remove(path); }

    measure::CSource Make(const SRun& run) {
        const auto camera =
            app::FindSynthFamily(kType)->make({.type = kType, .form = {}, .width = run.width, .height = run.height});
        std::ofstream file(path, std::ios::binary);
        for (u32 i = 0; i < kFrames; ++i) {
            const std::vector<u8> frame = camera->Frame(i, app::RenderScene(run.width, run.height, i));
            file.write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
        }
        file.close();
        return measure::Open(path, {.pixelType = "K410 IR (GigE)", .width = run.width, .height = run.height});
    }
    void Measure(unsigned threads) {
        measure::CSeries series(measurement, {.threads = threads});
        for (measure::CFrame& frame : series) last.swap(frame.values);
    }
    /// The last frame by the steps of the library.
    std::string Prove() const {
        measure::SRawFrame raw;
        source.Read(kFrames - 1, raw);
        const measure::SFrameFormat& f = source.Format();
        std::vector<u16> counts(f.PixelCount());
        std::vector<float> expected(counts.size());
        reduce::CReduceObjectArray objects;
        source.Describe(objects);
        u8 preset = 0;
        bool presets[8] = {true};
        reduce::CConvertContext context;
        context.setReduceObjs(&objects);
        const bool done = reduce::filterFactory()->CreateForPixelType(kType)->ParseFrame(
                              raw.bytes.data(), kType, f.width, f.height, static_cast<u32>(raw.bytes.size()),
                              {counts.data(), UInt16}, objects, preset) &&
                          context.SetUnit(TemperatureFactory, Celsius) && context.Update(presets, 8, 0) &&
                          context.Convert({counts.data(), UInt16}, {expected.data(), Flt32}, nullptr, f.PixelCount());
        return done ? FirstDifference(last, expected) : "the library does not convert the frame";
    }

    std::filesystem::path path;
    measure::CSource source;
    measure::CMeasurement measurement;
    std::vector<float> last;
};

SKernel Series(const char* name, unsigned threads, std::string beside = {}) {
    return {.name = name,
            .bytesPerPixel = 7,
            .make =
                [threads](const SRun& run) {
                    const auto dump = std::make_shared<SDump>(run);
                    return SJob{[=](u32) { dump->Measure(threads); }, [=] { return dump->Prove(); }};
                },
            .beside = std::move(beside),
            .times = 5,
            .calls = kFrames};
}

const CKernelEntry kOne(Series("Series of K410 frames, 1 thread", 1));
const CKernelEntry kTwo(Series("Series of K410 frames, 2 threads", 2, "Series of K410 frames, 1 thread"));
const CKernelEntry kAgain({.name = "Another measurement of an open source",
                           .bytesPerPixel = 7,
                           .make =
                               [](const SRun& run) {
                                   const auto dump = std::make_shared<SDump>(run);
                                   return SJob{[=](u32) { measure::CMeasurement again(dump->source, {}); },
                                               [=] {
                                                   dump->Measure(1);
                                                   return dump->Prove();
                                               }};
                               },
                           .beside = "Series of K410 frames, 1 thread"});

}  // namespace

}  // namespace ovix::bench
