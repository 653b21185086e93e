#pragma once

#include <filesystem>

#include "measure/recordings/recording_file.h"
#include "measure/sources/frame_layout.h"

namespace ovix::measure {

/// A CRC-32 of each frame, in a file beside the recording (`docs/formats/frame_sums.md`).
struct SFrameSums {
    u32 frameSize = 0;    ///< bytes of each frame that are summed
    u32 metadataCrc = 0;  ///< of all bytes of the recording before its first frame
    TArray<u32> sums;

    /// Whether they are those of the recording; an older recording of the same name had others.
    bool BelongTo(const CRecordingFile& file) const;
};

/// "run.krt.crc" beside "run.krt".
std::filesystem::path SumsPath(const std::filesystem::path& recording);

/// Nothing for a damaged file.
std::optional<SFrameSums> LoadSums(const std::filesystem::path& path);
void SaveSums(const std::filesystem::path& path, SFrameSums& sums, bool overwrite);
/// Beside a recording that was just written: the sums, or, for null, none of a recording that it replaced.
void PutSums(const std::filesystem::path& recording, SFrameSums* sums);

/// Holds frames against their sums. Behind a torn place, where frames may be lost, numbers are no more those under
/// which frames were summed: there the first frame that has a sum further on tells how many are missing.
class CSumCheck {
  public:
    explicit CSumCheck(SFrameSums sums) : sums_(std::move(sums)) {}

    /// Looks for the sum of frame `number`; frames from `first` on, with which it stands behind a torn place, are then
    /// as far from theirs. False when no sum is that of the frame.
    bool Locate(u64 first, u64 number, std::span<const u8> bytes);
    /// The same for all torn places of a file.
    void Locate(const IBytes& bytes, const CEqualFrames& layout);
    /// Throws `CError` (SumDiffers) where a frame is not what it was when it was summed. Any number of threads.
    void Require(u64 number, std::span<const u8> bytes) const;

  private:
    struct SStretch {
        u64 first = 0;    ///< number of its first frame
        u64 missing = 0;  ///< frames ahead of it
    };
    u64 MissingAt(u64 number) const;

    SFrameSums sums_;
    std::vector<SStretch> stretches_;
};

/// The sums beside a recording that has `count` frames at least; nothing where there are none. Those that are damaged
/// or another recording's are reported.
std::optional<CSumCheck> SumsBeside(const CRecordingFile& file, u64 count, const Report& report);

}  // namespace ovix::measure
