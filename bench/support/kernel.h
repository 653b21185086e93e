#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/types.h"

/// What a benchmark file tells the harness about a kernel. Everything else (frame sizes, in cache or streaming, the
/// copy beside it, the table at the end) is the harness's.
///
///     const CKernelEntry kEntry({.name = "Invert UInt16",
///                                .bytesPerPixel = 4,
///                                .wanted = 0.9,
///                                .make = [](const SRun& run) {
///         auto data = std::make_shared<SData>(run);   // run.lanes frames of run.Pixels() pixels
///         return SJob{[=](u32 lane) { Invert(data->in[lane], data->out[lane]); },
///                     [=] { return FirstDifference(data->out[0], Expected(data->in[0])); }};
///     }});
namespace ovix::bench {

/// The circumstances of one measurement.
struct SRun {
    u16 width = 0;
    u16 height = 0;
    /// Frames to cycle through: 1 for a frame in cache, more than the last-level cache holds for streaming.
    u32 lanes = 1;

    u32 Pixels() const { return u32{width} * height; }
};

/// Another way to what a kernel does, measured in turn with it.
struct SPeer {
    std::string name;
    std::function<void(u32 lane)> run;
};

struct SJob {
    /// Processes one frame; `lane` is below `SRun::lanes`.
    std::function<void(u32 lane)> run;
    /// Called once, after `run(0)`: compares the results of lane 0 with a plain reference. Empty when they are the
    /// same, else what differs; the harness then stops.
    std::function<std::string()> prove;
    /// What stands beside the kernel instead of the copy in memory: as many bytes, moved plainly in the same way.
    std::function<void(u32 lane)> plain = {};
    /// They refer to data that `run` holds alive.
    std::vector<SPeer> peers = {};
};

struct SKernel {
    std::string name;
    /// Bytes that the kernel must read and write for each pixel, tables of one entry for each pixel included. The copy
    /// that it is compared with moves as many (half of them read, half written).
    double bytesPerPixel = 0;
    /// The share of the copy's speed that is wanted in cache; 0 for none.
    double wanted = 0;
    /// The part of `bytesPerPixel` that changes from frame to frame; 0 for all. It decides how many lanes stream.
    double streamedBytesPerPixel = 0;
    std::function<SJob(const SRun&)> make;
    /// The kernel whose time this one's is given in multiples of, and the most that is wanted; 0 for none.
    std::string beside = {};
    double mostBeside = 0;
    /// How often a frame is measured; 0 for the harness's own number.
    u32 times = 0;
    /// Calls within one `run`, for what is too short for the clock; times are those of one call.
    u32 calls = 1;
    /// The most time that is wanted for a call in cache; 0 for none.
    double mostNanoseconds = 0;
    /// For a kernel that fills a table of so many entries instead of a frame: it is measured once, and its "pixels" are
    /// entries.
    u32 entries = 0;
};

/// A static object of this class enters a kernel in the program.
class CKernelEntry {
  public:
    explicit CKernelEntry(SKernel kernel);
};

/// All kernels that entered, by name.
std::vector<SKernel> Kernels();

}  // namespace ovix::bench
