#pragma once

#include <optional>
#include <span>
#include <vector>

#include "apps/ovix/report/packed_frame.h"
#include "core/core.h"

namespace ovix::app {

/// How the pixels of a page are made.
struct SPacking {
    u32 bin = 1;      ///< pixels of the source on a side that make one
    double step = 1;  ///< between neighbouring values, in the unit of the page
};

/// What somebody asked for; the rest is open.
struct SPackingWish {
    std::optional<double> step = {};
    std::optional<u32> bin = {};
    std::optional<u64> mostBytes = {};  ///< of the whole page
};

/// Chooses a packing by a sample of the frames.
class CPackingChoice {
  public:
    CPackingChoice(const SPackingWish& wish, u16 width, u16 height) : wish_(wish), width_(width), height_(height) {}

    /// Keeps a frame of the sample, in the unit of the page.
    void Sample(std::span<const float> values, std::span<const u8> status);
    /// The packings to be tried one after the other for a page of so many frames, the finest first; those that are too
    /// large as far as the sample tells are left out, so that none may be left. `otherBytes` are those of a page
    /// without frames.
    std::vector<SPacking> Candidates(EUnit unit, u64 frames, u64 otherBytes) const;
    /// The bytes of a frame in the coarsest packing that is open, as far as the sample tells.
    u64 LeastBytesOfFrame(EUnit unit) const;

  private:
    struct SFrame {
        std::vector<float> values;
        std::vector<u8> status;
    };

    SPacking Finest(EUnit unit) const;
    std::vector<SPacking> Open(EUnit unit) const;
    double BytesOfFrame(const SPacking& packing) const;

    SPackingWish wish_;
    u16 width_;
    u16 height_;
    std::vector<SFrame> sample_;
};

/// The packings from a finest one on: steps up to four times its own, then bins doubled, and so on. Nothing that is
/// fixed changes, and no side becomes shorter than 16 pixels by it.
std::vector<SPacking> CoarserPackings(SPacking finest, bool stepIsFixed, bool binIsFixed, u16 width, u16 height);

/// The step that suits values between these: 1, 2 or 5 times a power of ten, and at least ten thousand of them.
double SuitingStep(float lowest, float highest);

}  // namespace ovix::app
