#pragma once

#include <memory>
#include <optional>

#include "measure/sources/frame_format.h"
#include "measure/sources/frame_layout.h"

namespace ovix::measure {

/// Frames that do not stand in their file as they are.
class IPackedFrames {
  public:
    virtual ~IPackedFrames() = default;
    /// Fills the bytes by the counts of one frame, low byte first. By any number of threads at once. Throws `CError`
    /// (PixelsDamaged) for one that does not unpack to as many.
    virtual void Read(u64 number, std::span<u8> counts) const = 0;
};

/// Plain counts in a file of another kind, which says where they stand.
struct SArrayFile {
    SFrameFormat format = {};          ///< counts or counts-be
    std::vector<SExtent> frames = {};  ///< of those that are whole; of packed ones the sizes are those of counts
    u64 stated = 0;                    ///< how many the file says that there are
    std::unique_ptr<IPackedFrames> packed = {};  ///< reads them where they do not stand in the file; borrows the bytes
};

/// Whether the file begins as one of those of which `FindArray` knows the kind.
bool IsArrayFile(const IBytes& bytes);

/// Looks into a NumPy file (version 1 to 3, 16-bit unsigned, rows first, two or three dimensions), a TIFF or BigTIFF
/// (each page 16-bit unsigned, one sample; plain or by LZW, Deflate, PackBits or Zstandard, in strips or tiles) and a
/// PNG (16-bit grey). Nothing for a file of no such kind; throws `CError` (UnknownFormat) for one of them that holds
/// something else, with what it holds. Pixels are not read.
std::optional<SArrayFile> FindArray(const IBytes& bytes);

/// The same for a file that is known to be one.
SArrayFile FindInTiff(const IBytes& bytes);
SArrayFile FindInPng(const IBytes& bytes);

/// Counts of that size. Throws `CError` (UnknownFormat) for one that frames cannot have, and for one to which the bytes
/// of the file cannot unpack, before anybody takes the memory for it.
SFrameFormat CountsOf(const IBytes& bytes, u64 width, u64 height, bool bigEndian);
[[noreturn]] void RefuseArray(const IBytes& bytes, const char* kind, std::string expected, std::string found);

/// Frames wherever they stand.
class CListedFrames final : public IFrameLayout {
  public:
    explicit CListedFrames(std::vector<SExtent> frames) : frames_(std::move(frames)) {}
    u64 Count() const override { return frames_.size(); }
    std::optional<SExtent> Find(u64 frame) const override {
        return frame < frames_.size() ? std::optional(frames_[frame]) : std::nullopt;
    }
    u64 FrameSize() const override { return frames_.front().size; }

  private:
    std::vector<SExtent> frames_;
};

}  // namespace ovix::measure
