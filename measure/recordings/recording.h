#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "measure/sources/frame_numbers.h"
#include "measure/sources/source.h"

namespace ovix::measure {

struct SWriteOptions {
    bool unpacked = false;   ///< say that frames are stored as the camera delivers them
    bool overwrite = false;  ///< replace a file that is there
    bool keepPart = false;   ///< a recording that does not come to its end is left as FILE.part, for `Repair`
    bool checksums = false;  ///< write a CRC of each frame to a file beside the recording
    std::optional<CSource> input = {};  ///< an output that is this very file is refused, whatever its names are
};

/// A frame as it goes into a recording.
struct SReadyFrame {
    std::vector<u8> bytes = {};
    u32 preset = 0;  ///< for which it counts
    u32 sum = 0;     ///< CRC-32 of the bytes, where sums are wanted
};

/// Writes a recording frame by frame, to FILE.part, which becomes FILE when it is finished. A process that is killed
/// leaves a part that `RepairRecording` makes a recording of, with all frames that were added; one whose machine loses
/// its power, with all that were flushed. One thread at a time.
class OVIX_MEASURE_API CRecordingWriter {
  public:
    /// `objects` is the metadata of the source, with a source info, into which the packet goes that follows from the
    /// frame size. All frames take `frameSize` bytes: a shorter one is filled up with zeros, which decoders pass over.
    /// Throws `CError` (FileExists, also for a part that is there already; FileIsInput, FileUnwritable).
    CRecordingWriter(const std::filesystem::path& path, reduce::CReduceObjectArray& objects, const SFrameFormat& format,
                     u32 frameSize, const SWriteOptions& options);
    CRecordingWriter(CRecordingWriter&&) noexcept;
    ~CRecordingWriter();

    /// Makes a frame ready as the camera delivered it. One that the decoder does not store or would not take again
    /// throws `CError`. Any number of threads at a time, also while another one adds.
    SReadyFrame Prepare(std::span<const u8> frame) const;
    /// Appends what this writer made ready.
    void Add(const SReadyFrame& frame);
    void Add(std::span<const u8> frame) { Add(Prepare(frame)); }
    /// All frames that were added have reached the medium, which takes some milliseconds on many. Throws `CError`
    /// (FileUnwritable).
    void Flush();
    /// Puts the frame counts into the metadata, makes all of it last, and gives the file its name.
    void Finish();
    u64 Count() const;
    u64 Bytes() const;
    /// Where it is written until it is finished.
    const std::filesystem::path& Part() const;

  private:
    struct SBody;
    std::unique_ptr<SBody> body_;
};

/// Fills the array with what a recording of these frames says before its first frame: what the source says, and the
/// metadata of the first frames, where the earlier ones prevail. Frames that would not do are passed over. The time is
/// the first that a frame carries, else what the source says; 0 when nobody does.
OVIX_MEASURE_API void GatherMetadata(const CSource& source, const CFrameNumbers& frames,
                                     reduce::CReduceObjectArray& objects);

/// The same for a source that is not numbered, of which the first frames were taken.
OVIX_MEASURE_API void GatherMetadata(const CSource& source, std::span<const SRawFrame> firstFrames,
                                     reduce::CReduceObjectArray& objects);

/// Holds everything in a recording that stands there in two ways against itself, all of its frames included. Findings
/// come in the order of the file but for the counts, which come last, on the caller's thread; answers whether none of
/// them is damage. `threads` look at frames; 0: as many as the machine runs at once.
OVIX_MEASURE_API bool CheckRecording(const std::filesystem::path& path,
                                     const std::function<void(const SFinding&)>& report, unsigned threads = 0);

/// Makes the side file of sums for a recording that has none: a CRC-32 of each frame, against which every source holds
/// the frames that it reads from then on. Throws `CError` for a recording that is not sound.
OVIX_MEASURE_API void MakeChecksums(const std::filesystem::path& recording, bool overwrite = false,
                                    unsigned threads = 0);

/// What became of a recording that was brought back.
struct SRepaired {
    u64 frames = 0;   ///< in the new file
    u64 leftOut = 0;  ///< frames and blocks that would not do
};
/// Writes a whole recording from what is whole in another, bit for bit. `say` is called for everything that is left out
/// or made anew. Throws `CError` when there are no pixels or not one frame to be had.
OVIX_MEASURE_API SRepaired RepairRecording(const std::filesystem::path& from, const std::filesystem::path& to,
                                           const SWriteOptions& options,
                                           const std::function<void(const SFinding&)>& say);

}  // namespace ovix::measure
