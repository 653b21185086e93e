#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/region.h"
#include "apps/ovix/units.h"

namespace ovix::app {

/// What holds for all frames that go to one output.
struct SSeries {
    u16 width = 0;
    u16 height = 0;
    /// How many frames will be added, skipped ones included. One frame makes a plain picture or table.
    u64 frames = 1;
    SUnitText unit;
    std::string title;                 ///< one line for a reader: source, camera
    Json parameters = Json::object();  ///< all that the values rest on: emissivity, distance, ...
};

/// One frame. The pixels belong to the caller.
struct SPicture {
    u64 frame = 0;                  ///< its number in the source
    std::span<const float> values;  ///< width times height, in the unit of the series
    std::span<const u8> status;     ///< as many status bytes, or none
    std::string caption;            ///< what differs from frame to frame: the time, say
};

struct SWriteOptions {
    bool overwrite = false;
    /// Pictures: the values at the ends of the palette. Without it, those of the first frame hold for all.
    std::optional<std::pair<float, float>> range;
    /// Pictures: the regions to be drawn.
    std::vector<SRegion> marks;
};

/// Writes frames one after the other; memory does not grow with their number. A file appears in `Finish`, whole,
/// and not at all without it; but of several PNG files each appears as soon as it is drawn. Failures throw `CAppError`.
class IFrameWriter {
  public:
    virtual ~IFrameWriter();
    virtual void Add(const SPicture& picture) = 0;
    virtual void Finish() = 0;
};

/// The writer that belongs to the extension: `.png`, `.tif` or `.tiff`, `.npy`, `.csv`, in any case of letters.
/// Another extension is wrong usage.
///
/// Several frames go to one file, but for PNG, where each has its own: `out.png` becomes `out-000012.png` for frame 12.
/// The status bytes of TIFF, NPY and CSV go to a file beside: `out.status.npy`.
std::unique_ptr<IFrameWriter> MakeFrameWriter(const std::filesystem::path& target, const SSeries& series,
                                              const SWriteOptions& options);

/// How many pixels bear each flag of the status byte, by the flag's name, and how many none ("good").
Json CountStatus(std::span<const u8> status);

}  // namespace ovix::app
