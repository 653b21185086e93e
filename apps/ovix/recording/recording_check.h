#pragma once

#include <functional>

#include "apps/ovix/recording/recording_file.h"

namespace ovix::app {

/// One thing that is wrong with a file: where, what had to stand there, what was found.
struct SFinding {
    u64 offset = 0;
    std::string what;
    std::string expected;
    std::string found;
};

/// Holds everything in a recording that can be told in two ways against itself: the fixed fields of its headers, the
/// CRCs of its blocks, the sizes of blocks against records, names against type ids, the geometry of the pixels against
/// that of the source, the frame counts against the frames, and each frame against its decoder's check.
class CRecordingCheck {
  public:
    using Report = std::function<void(const SFinding&)>;

    /// Both are borrowed.
    CRecordingCheck(const CRecordingFile& file, const Report& report) : file_(file), report_(report) {}

    /// Reports what is wrong, in the order of the file but for the frame counts, which come last, and nothing behind a
    /// damaged file header; answers whether nothing is.
    bool Run();

  private:
    void Find(SFinding finding);
    void FindDifferences(StoredLayout layout, u64 at, const std::string& of, const u8* expected, const u8* found);
    void CheckHeader(const reduce::SInfoFileBlock& expected, u64 at, const std::string& of);
    void CheckFileHeader();
    void CheckBlocks();
    void CheckBlock(const reduce::SInfoFileBlock& block);
    void CheckPixels();
    void CheckFrames();
    void CheckCounts(const u32* counts);

    const CRecordingFile& file_;
    const Report& report_;
    bool good_ = true;
};

/// The header that the block of an object must have, as far as its fields follow from each other and from its data; of
/// a block whose CRC is right, what differs is damage of the header.
reduce::SInfoFileBlock ExpectedHeader(const CRecordingFile& file, const reduce::SInfoFileBlock& block);
/// The first source info that can be loaded, whatever its CRC; empty when none can.
TSharedPtr<reduce::CSourceInfoReduceObject> LoadSourceInfo(const CRecordingFile& file);
/// The record of the pixels, likewise and as far as it follows from the source info, which may be null.
reduce::SPixelsHeader ExpectedPixels(const CRecordingFile& file, const reduce::CSourceInfoReduceObject* source);

/// Whether a block, which ends within the file, is what its header says: its CRC, and for an object of a known class
/// that it can be loaded.
bool IsWholeBlock(const CRecordingFile& file, const reduce::SInfoFileBlock& block);

}  // namespace ovix::app
