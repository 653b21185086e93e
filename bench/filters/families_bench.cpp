#include <cstring>

#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"
#include "bench/support/data.h"

/// Every family of cameras on frames of its own: the copy of the pixels with the metadata, the metadata alone, and what
/// a scan asks of a frame. Families that can be synthesised enter by themselves.
namespace ovix::bench {

namespace {

using namespace ovix::reduce;

/// One synthetic frame in as many places as there are lanes, in memory that decoders may write to.
struct SStream {
    SStream(const app::SSynthFamily& family, const SRun& run)
        : type(family.forms().front().type),
          width(run.width),
          height(run.height),
          filter(filterFactory()->Create(family.filter)),
          frames(run.lanes, family.make({.type = type, .width = width, .height = height})
                                ->Frame(1, app::RenderScene(width, height, 1))),
          decoded(Lanes<u16>(run)) {}

    u32 Size() const { return static_cast<u32>(frames[0].size()); }
    bool Decode(u32 lane, STypedData dest) {
        u8 preset = 0;
        return filter->ParseFrame(frames[lane].data(), type, width, height, Size(), dest, objects, preset);
    }
    bool Scan(u32 lane, u64& counter) {
        u8 preset = 0;
        CDateTime time;
        return filter->ParseBasicInfo(frames[lane].data(), type, width, height, Size(), preset, counter, time);
    }

    GUID type;
    u16 width, height;
    TSharedPtr<IFilter> filter;
    CReduceObjectArray objects;
    std::vector<std::vector<u8>> frames;
    std::vector<std::vector<u16>> decoded;
};

/// The pixels as the frame holds them, bits above the 14 of a count aside.
std::string ProvePixels(SStream& stream) {
    constexpr u16 kCount = 0x3FFF;
    void* at = nullptr;
    i32 stride = 0;
    stream.filter->GetPixels(stream.frames[0].data(), stream.type, stream.width, stream.height, stream.Size(), &at,
                             stride);
    std::vector<u16> expected(stream.decoded[0].size());
    std::memcpy(expected.data(), at, 2 * expected.size());
    for (u16& count : expected) count &= kCount;
    return FirstDifference(stream.decoded[0], expected);
}

/// The counter that the metadata shows, found again by the scan.
std::string ProveCounter(SStream& stream) {
    u64 counter = 0;
    if (!stream.Scan(0, counter)) return "the frame cannot be scanned";
    if (!stream.Decode(0, {nullptr, NoPixels})) return "the frame cannot be parsed";
    return counter == 1 || !stream.filter->HasFrameCounter(stream.type) ? "" : "another counter";
}

SKernel Pixels(const app::SSynthFamily& family, const std::string& name) {
    return {.name = name + " ParseFrame", .bytesPerPixel = 4, .wanted = 0.9, .make = [&family](const SRun& run) {
                const auto stream = std::make_shared<SStream>(family, run);
                return SJob{[=](u32 lane) {
                                stream->Decode(lane, {stream->decoded[lane].data(), UInt16});
                            },
                            [=] { return ProvePixels(*stream); }};
            }};
}

SKernel Metadata(const app::SSynthFamily& family, const std::string& name) {
    return {.name = name + " metadata alone", .bytesPerPixel = 4, .make = [&family](const SRun& run) {
                const auto stream = std::make_shared<SStream>(family, run);
                return SJob{[=](u32 lane) {
                                stream->Decode(lane, {nullptr, NoPixels});
                            },
                            [=] { return ProveCounter(*stream); }};
            }};
}

SKernel BasicInfo(const app::SSynthFamily& family, const std::string& name) {
    constexpr u32 kCalls = 100;
    // These two have a header without a year and ask the clock for it.
    const bool asksClock = name == "Osprey" || name == "MVFalcon";
    return {.name = name + " ParseBasicInfo",
            .bytesPerPixel = 4,
            .make =
                [&family](const SRun& run) {
                    const auto stream = std::make_shared<SStream>(family, run);
                    return SJob{[=](u32 lane) {
                                    u64 counter = 0;
                                    for (u32 i = 0; i < kCalls; ++i) stream->Scan(lane, counter);
                                },
                                [=] { return ProveCounter(*stream); }};
                },
            .calls = kCalls,
            .mostNanoseconds = asksClock ? 0.0 : 60.0};
}

/// Entered by a static object, as all kernels.
const bool entered = [] {
    for (const app::SSynthFamily& family : app::SynthFamilies()) {
        const std::string name = CStringMB(family.filter).c_str();
        for (const auto& kernel : {Pixels(family, name), Metadata(family, name), BasicInfo(family, name)}) {
            CKernelEntry entry(kernel);
        }
    }
    return true;
}();

}  // namespace

}  // namespace ovix::bench
