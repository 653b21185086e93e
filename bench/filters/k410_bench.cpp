#include <algorithm>

#include "bench/support/data.h"
#include "core/bytes.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_types.h"

namespace ovix::bench {

namespace {

using reduce::CReduceObjectArray;
using reduce::IFilter;

constexpr GUID kF7M0 = reduce::frame_types::kK410F7M0, kGigEFlipped = reduce::frame_types::kK410GigEFlipped;

/// Frames in the other byte order or turned, which cost more than a copy; decoded one after the other by one decoder
/// into one source's objects.
struct SStream {
    SStream(const SRun& run, const GUID& pixelType, bool swapped)
        : type(pixelType), width(run.width), height(run.height), scene(SceneLanes(run)), decoded(Lanes<u16>(run)) {
        constexpr u32 kContainer = 128, kRecord = 2428;
        for (const std::vector<u16>& pixels : scene) {
            std::vector<u8> frame(2 * pixels.size() + kContainer + kRecord);
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                swapped ? StoreBig(&frame[2 * i], pixels[i]) : StoreLittle(&frame[2 * i], pixels[i]);
            }
            u8* container = &frame[2 * pixels.size()];
            StoreLittle<u32>(container, 0x004D4B4D);
            StoreLittle<u16>(container + 64, 32);
            StoreLittle<u32>(container + 76, kContainer);
            StoreLittle<u32>(container + 80, kRecord);
            StoreLittle<u16>(container + 96, 1);
            StoreLittle<u16>(container + 98, swapped ? 1 : 0);
            StoreLittle<u16>(container + kContainer, 2);  // the record's byte order
            frames.push_back(std::move(frame));
        }
    }
    void Decode(u32 lane) {
        u8 preset = 0;
        filter->ParseFrame(frames[lane].data(), type, width, height, static_cast<u32>(frames[lane].size()),
                           {decoded[lane].data(), UInt16}, objects, preset);
    }

    GUID type;
    u16 width, height;
    std::vector<std::vector<u16>> scene, decoded;
    std::vector<std::vector<u8>> frames;
    TSharedPtr<IFilter> filter = reduce::filterFactory()->Create(L"K410");
    CReduceObjectArray objects;
};

SKernel WithPixels(const char* name, const GUID& type, bool swapped) {
    return {.name = name, .bytesPerPixel = 4, .make = [=](const SRun& run) {
                const auto stream = std::make_shared<SStream>(run, type, swapped);
                return SJob{[=](u32 lane) { stream->Decode(lane); },
                            [=] {
                                std::vector<u16> expected = stream->scene[0];
                                if (type == kGigEFlipped) std::reverse(expected.begin(), expected.end());
                                return FirstDifference(stream->decoded[0], expected);
                            }};
            }};
}

const CKernelEntry kSwapped(WithPixels("K410 ParseFrame swapped", kF7M0, true));
const CKernelEntry kTurned(WithPixels("K410 ParseFrame turned", kGigEFlipped, false));

}  // namespace

}  // namespace ovix::bench
