#pragma once

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "measure/finding.h"
#include "measure/sources/bytes.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// A recording, or an info file without frames, as it stands on the disk: the directory of its blocks, the record of
/// its pixels, and where its frames are. Nothing is taken for granted: what a damaged file still says can be asked.
class CRecordingFile {
  public:
    /// Bytes of a file that tell whether it is a recording.
    static constexpr u64 MagicBytes = 16;
    static bool Recognises(std::span<const u8> start);

    /// Reads headers only. Throws `CError` only when the system cannot read.
    explicit CRecordingFile(std::shared_ptr<const IBytes> bytes);

    const IBytes& Bytes() const { return *bytes_; }
    const std::string& Name() const { return bytes_->Name(); }
    /// The whole file for the library, at its start.
    TSharedPtr<IFile> Open() const { return MakeShared<CBytesFile>(*bytes_); }

    /// All blocks that could be reached, in order; that of the pixels is the last.
    const std::vector<reduce::SInfoFileBlock>& Blocks() const { return blocks_; }
    bool IsPixels(const reduce::SInfoFileBlock& block) const {
        return hasPixels_ && block.headerOffset == pixelsBlock_.headerOffset;
    }
    bool EndsInside(const reduce::SInfoFileBlock& block) const {
        return block.size <= bytes_->Size() - std::min(bytes_->Size(), block.dataOffset);
    }
    /// Where and why the blocks cannot be followed any further.
    const std::optional<SErrorFacts>& Break() const { return break_; }
    /// Looks for the block of the pixels behind the place where the chain broke.
    bool FindPixelsBehindBreak();

    /// Whether there is a block of the pixels with a whole record; all that follows asks for it.
    bool HasPixels() const { return hasPixels_; }
    const reduce::SInfoFileBlock& PixelsBlock() const { return pixelsBlock_; }
    const reduce::SPixelsHeader& Pixels() const { return pixels_; }
    /// Goes on with another record than that in the file.
    void SetPixels(const reduce::SPixelsHeader& pixels) { pixels_ = pixels; }
    u64 FramesAt() const { return pixelsBlock_.dataOffset + reduce::PixelsHeaderBytes(pixelsBlock_.version); }
    /// Bytes from one frame to the next: the larger of the two sizes in the record. A frame is the first `frameSize` of
    /// them.
    u64 FrameStep() const { return std::max(pixels_.frameSize, pixels_.frameSize2); }
    u64 FrameAt(u64 frame) const { return FramesAt() + frame * FrameStep(); }
    u64 WholeFrames() const { return FrameStep() ? FrameBytes() / FrameStep() : 0; }
    /// Bytes of a last frame that is cut; 0 when all are whole.
    u64 CutBytes() const { return FrameStep() ? FrameBytes() % FrameStep() : FrameBytes(); }

    u32 CrcOf(const reduce::SInfoFileBlock& block) const { return bytes_->CrcOf(block.dataOffset, block.size); }
    /// At most `most` bytes from the start of the block's data.
    std::vector<u8> DataOf(const reduce::SInfoFileBlock& block, u64 most) const {
        return bytes_->Get(block.dataOffset, std::min(most, block.size));
    }

  private:
    u64 FrameBytes() const { return bytes_->Size() - std::min(bytes_->Size(), FramesAt()); }
    void FindBreak();
    void ReadPixels(const reduce::SInfoFileBlock& block);

    std::shared_ptr<const IBytes> bytes_;
    std::vector<reduce::SInfoFileBlock> blocks_;
    std::optional<SErrorFacts> break_;
    reduce::SInfoFileBlock pixelsBlock_ = {};
    reduce::SPixelsHeader pixels_ = {};
    bool hasPixels_ = false;
};

/// The recording of that name. Throws `CError` when it is none.
CRecordingFile OpenRecording(const std::filesystem::path& path);

/// Whether the packet is the frame as the camera delivers it.
bool IsUnpacked(const reduce::SPixelsHeader& pixels);

/// The name of a block for a reader, with its preset when it has one: "Correction (preset 1)".
std::string BlockText(const reduce::SInfoFileBlock& block);

}  // namespace ovix::measure
