#pragma once

#include <filesystem>

#include "measure/recordings/recording_file.h"

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

/// Throws `CError` (SumDiffers) where a frame is not what it was when it was summed.
void RequireSum(const SFrameSums& sums, u64 frame, std::span<const u8> bytes);

}  // namespace ovix::measure
