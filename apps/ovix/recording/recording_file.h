#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "apps/ovix/fault.h"
#include "apps/ovix/input/input_file.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// A recording, or an info file without frames, as it stands on the disk: the directory of its blocks, the record of
/// its pixels, and where its frames are. Nothing is taken for granted: what a damaged file still says can be asked.
class CRecordingFile {
  public:
    /// By the magic at its start.
    static bool Recognises(const CInputFile& input);

    /// Reads headers only. Throws `CFault` only when the system cannot read.
    explicit CRecordingFile(std::shared_ptr<const CInputFile> input);

    const CInputFile& Input() const { return *input_; }
    const std::string& Name() const { return input_->Name(); }
    /// The whole file for the library, at its start.
    TSharedPtr<IFile> Open() const;

    /// All blocks that could be reached, in order; that of the pixels is the last.
    const TArray<reduce::SInfoFileBlock>& Blocks() const { return blocks_; }
    /// Where and why the blocks cannot be followed any further.
    const std::optional<SFault>& Break() const { return break_; }
    /// Looks for the block of the pixels behind the place where the chain broke.
    bool FindPixelsBehindBreak();

    /// Whether there is a block of the pixels with a whole record; all that follows asks for it.
    bool HasPixels() const { return hasPixels_; }
    const reduce::SInfoFileBlock& PixelsBlock() const { return pixelsBlock_; }
    const reduce::SPixelsHeader& Pixels() const { return pixels_; }
    /// Goes on with another record than that in the file.
    void SetPixels(const reduce::SPixelsHeader& pixels) { pixels_ = pixels; }
    /// Bytes of the record in the file: 512, or 44 of the oldest files.
    u32 PixelsRecordSize() const;
    u64 FramesAt() const { return pixelsBlock_.dataOffset + PixelsRecordSize(); }
    /// Bytes from one frame to the next: the larger of the two sizes in the record. A frame is the first `frameSize` of
    /// them.
    u64 FrameStep() const { return std::max(pixels_.frameSize, pixels_.frameSize2); }
    u64 FrameAt(u64 frame) const { return FramesAt() + frame * FrameStep(); }
    u64 WholeFrames() const { return FrameStep() ? FrameBytes() / FrameStep() : 0; }
    /// Bytes of a last frame that is cut; 0 when all are whole.
    u64 CutBytes() const { return FrameStep() ? FrameBytes() % FrameStep() : FrameBytes(); }

    /// CRC-32 of a block's data, up to the end of the file at most.
    u32 CrcOf(const reduce::SInfoFileBlock& block) const;
    /// At most `most` bytes from the start of the block's data.
    std::vector<u8> DataOf(const reduce::SInfoFileBlock& block, u64 most) const;

  private:
    u64 FrameBytes() const { return input_->Size() - FramesAt(); }
    void FindBreak();
    void ReadPixels(const reduce::SInfoFileBlock& block);

    std::shared_ptr<const CInputFile> input_;
    TArray<reduce::SInfoFileBlock> blocks_;
    std::optional<SFault> break_;
    reduce::SInfoFileBlock pixelsBlock_ = {};
    reduce::SPixelsHeader pixels_ = {};
    bool hasPixels_ = false;
};

/// The recording of that name. Throws `CFault` when there is none.
CRecordingFile OpenRecording(const std::string& name);

/// Whether the packet is the frame as the camera delivers it.
bool IsUnpacked(const reduce::SPixelsHeader& pixels);

/// The name of a block for a reader, with its preset when it has one: "Correction (preset 1)".
std::string BlockText(const reduce::SInfoFileBlock& block);

}  // namespace ovix::app
