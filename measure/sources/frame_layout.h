#pragma once

#include <functional>
#include <memory>

#include "measure/finding.h"
#include "measure/per_process.h"
#include "measure/sources/bytes.h"
#include "measure/sources/frame_probe.h"
#include "measure/sources/source.h"

namespace ovix::measure {

using Report = std::function<void(SFinding)>;

/// Where the whole frames of a file stand. May be asked by any number of threads at once.
class IFrameLayout {
  public:
    virtual ~IFrameLayout() = default;
    virtual u64 Count() const = 0;
    /// Nothing behind the last frame; cheaper than `Count` for a layout that has to look.
    virtual std::optional<SExtent> Find(u64 frame) const = 0;
    /// The bytes of each frame; 0 when they differ.
    virtual u64 FrameSize() const = 0;
};

/// Frames of equal size, one every `step` bytes, in stretches that begin where they may.
class CEqualFrames final : public IFrameLayout {
  public:
    /// Frames from `start` to the end of the bytes, of which the last may be cut.
    CEqualFrames(const IBytes& bytes, u64 start, u64 step, u64 size);

    /// Looks whether the frames at the end stand where their numbers put them, and where they do not, for the places at
    /// which bytes were lost or inserted: in the logarithm of the frames for each. What lies between two stretches is
    /// passed over and no frame has a number there. Bytes that no check tells from a frame are left alone, and so is a
    /// file whose end is right.
    void FindTears(const CFrameProbe& probe, const Report& report);
    /// Bytes of a last frame that is cut; 0 when all are whole.
    u64 CutBytes() const { return (end_ - stretches_.back().offset) % step_; }

    void ReportCut(const Report& report) const;
    /// The number of the first frame behind each torn place.
    std::vector<u64> FirstsBehindTears() const;

    u64 Count() const override { return stretches_.back().first + (end_ - stretches_.back().offset) / step_; }
    std::optional<SExtent> Find(u64 frame) const override;
    u64 FrameSize() const override { return size_; }

  private:
    struct SStretch {
        u64 first = 0;  ///< number of its first frame
        u64 offset = 0;
    };

    const IBytes& bytes_;
    u64 step_;
    u64 size_;
    u64 end_;
    std::vector<SStretch> stretches_;
};

/// Frames that tell their own length: 32 bits with the length of a compressed image, the image, and a container that
/// says where its last part ends. Zeros may stand between frames. When a frame's length is damaged, the run goes on at
/// the next place where a frame makes sense, and all bytes before it are the damaged frame.
///
/// Nothing is walked ahead: frames are looked for as far as they are asked for, and the places of some of them are
/// kept, never more than a fixed number.
class COwnLengthFrames final : public IFrameLayout {
  public:
    explicit COwnLengthFrames(const IBytes& bytes) : bytes_(bytes) {}

    /// Walks to the end at the first call.
    u64 Count() const override;
    std::optional<SExtent> Find(u64 frame) const override;
    u64 FrameSize() const override { return 0; }

    /// The bytes that it takes to tell the length of the frame with which these, 4 at least, begin, and once they are
    /// there the length itself: as many bytes as are given are a whole frame. 0 when they begin with none.
    static u64 BytesToTell(std::span<const u8> bytes);

  private:
    u64 LengthAt(u64 offset) const;
    SExtent FrameAt(u64 offset) const;
    u64 NextStart(u64 offset) const;
    struct SWalk {
        std::vector<u64> kept;  ///< the offsets of the frames 0, stride, 2 stride, ...
        u64 stride = 1;
        u64 walked = 0;    ///< frames known so far
        u64 walkedTo = 0;  ///< the end of the last of them
        bool ended = false;
        u64 lastFrame = ~u64{0};  ///< the frame asked for last, where the next one is looked for
        SExtent last;
    };
    /// Walks on until the frame is known; false at the end.
    bool WalkTo(u64 frame, SWalk& walk) const;

    const IBytes& bytes_;
    TPerProcess<SWalk> walk_;
};

/// The layout of a dump of frames of one format, `frameSize` bytes each, or as found when 0.
///
/// Frames of a compressed format tell their own length. All others are equally large, but how much stands behind the
/// pixels is the camera's affair, so the family's check is asked:
/// 1. The smallest size m with which the first frame passes. A frame that passes with no size is an error.
/// 2. If the content plays no part in the check (a frame of zeros passes too), frames have m bytes; unless the decoder
///    reads number and time of the first frame and not of zeros, which then counts from here on as a part of the check.
/// 3. Otherwise the smallest size, from m on, that divides the file into frames of which the second or the last passes.
/// 4. Otherwise the distance to the next place at which a frame passes: the file is cut or torn.
///    What stands behind a frame is never as much as a frame.
/// 5. Otherwise there is one frame: with all of the file when little stands behind m, else with m bytes before a cut
///    one.
///
/// Throws `CError` when there is not one whole frame.
std::unique_ptr<IFrameLayout> FindLayout(const IBytes& bytes, const SFrameFormat& format, u32 frameSize,
                                         const Report& report);

/// Looks at the first, the middle and the last frames: whether they pass their family's check, bear its mark, name the
/// size that was asked for, and whether numbers and times go on from neighbour to neighbour.
void CheckEnds(const IBytes& bytes, const IFrameLayout& layout, const CFrameProbe& probe, const Report& report);

/// What the probe has to go by for frames of which the first is given: the smallest size m of rule 1, after rule 2.
struct SFirstFrame {
    u64 smallest = 0;
    bool tells = false;  ///< the check tells frames from other bytes
};
SFirstFrame LookAtFirst(CFrameProbe& probe, std::span<const u8> bytes);

/// The distance from the start of the bytes to the first place, from `from` up to but not including `to`, at which a
/// frame of `size` bytes begins, of which its decoder reads `smallest`.
std::optional<u64> NextFrame(const CFrameProbe& probe, std::span<const u8> bytes, u64 from, u64 to, u64 size,
                             u64 smallest);

}  // namespace ovix::measure
