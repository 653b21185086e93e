#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "measure/error.h"
#include "measure/finding.h"
#include "measure/sources/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::measure {

enum class ESource : u8 { Recording, Dump, Counts };

/// How the bytes of a source are to be taken where they do not say it themselves. A recording needs none of it.
struct SOpenOptions {
    /// Of raw frames: a registered name or GUID; "counts" and "counts-be" are plain 16-bit pixels, little- and
    /// big-endian; "auto" is what the bytes of a file speak for, if that is just one thing. Ignored, as what follows,
    /// by a recording.
    std::string pixelType = {};
    u16 width = 0;  ///< pixels; 0 where `pixelType` is "auto"
    u16 height = 0;
    u32 frameSize = 0;  ///< bytes from one frame to the next; 0: as found
    /// The file grows: frames come one after the other, and the end is not there until a recording is finished or
    /// nothing came for `patience`.
    bool follow = false;
    std::chrono::milliseconds patience{10'000};
    /// Damaged metadata (a wrong CRC) is a finding and no error.
    bool acceptDamage = false;
    /// Ends the waiting for what a pipe, or a file that grows, begins with: with the error `Interrupted`.
    std::stop_token stop = {};
};

/// One frame as it lies in its source.
struct SRawFrame {
    u64 number = 0;  ///< from 0; in a pipe the count of frames before it
    u64 offset = 0;  ///< of its first byte in the source
    std::vector<u8> bytes = {};
};

/// A run of bytes of a file.
struct SExtent {
    u64 offset = 0;
    u64 size = 0;
};

/// Raw camera frames, whatever they lie in: a recording, a dump, plain counts, a pipe, a file that grows.
///
/// An opened source is immutable but for its findings, and shared: copies are one source, and all members may be called
/// from any thread. Opening costs headers, metadata and the two ends, never the whole file. Files are read and not
/// mapped, so one that is cut while it is read is an answer (`FileChanged`) and no signal.
class OVIX_MEASURE_API CSource {
  public:
    /// What stands behind it; for the makers of sources.
    class IBody;
    explicit CSource(std::shared_ptr<IBody> body);

    /// The file as the caller named it; "standard input" for a pipe without a name.
    const std::string& Name() const;
    ESource Kind() const;
    const SFrameFormat& Format() const;

    /// Whether frames can be asked for by their numbers, in any order. Those of a pipe and of a file that grows come
    /// one after the other.
    bool IsNumbered() const;
    /// The frames of a numbered source, at least 1 (a last one that is cut does not count); nothing for others.
    std::optional<u64> Count() const;
    /// The bytes of each frame; 0 when they differ.
    u64 FrameSize() const;

    /// Replaces `frame` by one frame of a numbered source. Throws `CError` with file and frame when it cannot be had;
    /// others can still be read then.
    void Read(u64 number, SRawFrame& frame) const;
    /// Where a frame of a numbered source stands in the file, which is not read. Throws `CError` (NoSuchFrame,
    /// NotNumbered; WrongArgument for frames of a PNG or a compressed TIFF, which stand nowhere as they are).
    SExtent Find(u64 number) const;
    /// The next frame of a source that is not numbered; false at its end. One caller at a time. A torn place goes on at
    /// the next frame that passes its family's check: that frame follows, after one `CError` (FrameRefused) that says
    /// how many bytes were passed over, in a call of its own. A stop that is asked for ends the waiting for bytes, with
    /// the error `Interrupted`.
    bool Next(SRawFrame& frame, const std::stop_token& stop = {}) const;

    /// Replaces the content of the array by what the source itself says of its frames: at least a `SourceInfo`. Heavy
    /// tables are shared and not copied.
    void Describe(reduce::CReduceObjectArray& objects) const;
    /// To be called after the metadata of a frame went to the array: puts back what the source says for all frames, for
    /// scene values that a recording was given when it was made.
    void Overrule(reduce::CReduceObjectArray& objects) const;
    /// Which of the eight scene values hold for the whole source, whatever its frames say; bit i is row i of the
    /// library's table of scene values.
    u32 OverruledScene() const;

    /// What the source is worth, in the order in which it was found: at opening, and since.
    std::vector<SFinding> Findings() const;
    /// The heaviest; nothing when there are none.
    std::optional<EWeight> Worst() const;
    /// Whether the path leads to the very file that is read, whatever its names are.
    bool IsFile(const std::filesystem::path& path) const;

    /// Adds what showed later. A finding that is there already is not added again.
    void Add(SFinding finding) const;

    IBody& Body() const { return *body_; }

  private:
    std::shared_ptr<IBody> body_;
};

/// Opens a file; "-" is the standard input. Throws `CError` for one that is missing, of no known format, or without
/// frames (`NoFrames`: a sound info file without frames too).
OVIX_MEASURE_API CSource Open(const std::filesystem::path& path, const SOpenOptions& options = {});
/// Whether a regular file begins as one that says its type and size by itself: a recording, or counts in a NumPy, TIFF
/// or PNG file. False for what cannot be read, a pipe included, of which nothing is taken.
OVIX_MEASURE_API bool SaysItsFormat(const std::filesystem::path& path);
/// As `Open` for a descriptor that can be read, a pipe or a socket; it stays the caller's.
OVIX_MEASURE_API CSource OpenDescriptor(int descriptor, std::string name, const SOpenOptions& options);
/// A source of frames that the caller has in memory and hands to `CMeasurement::Measure` or `CFrameReader::Read`, as a
/// camera delivers them. Nothing can be read from it: it has no numbers, and `Next` ends at once. Of the options, pixel
/// type and size count. Throws `CError` (WrongArgument, NoDecoder).
OVIX_MEASURE_API CSource PushedFrames(std::string name, const SOpenOptions& options);

}  // namespace ovix::measure
