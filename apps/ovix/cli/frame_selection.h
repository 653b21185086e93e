#pragma once

#include <string>
#include <vector>

#include "core/core.h"

namespace ovix::app {

/// The numbers of chosen frames in the order of the choice, without a list of them.
class CFrameNumbers {
  public:
    struct SRun {
        u64 first = 0;
        u64 last = 0;  ///< included when the step meets it
        u64 step = 1;

        u64 Count() const { return (last - first) / step + 1; }
    };

    explicit CFrameNumbers(std::vector<SRun> runs) : runs_(std::move(runs)) {}
    u64 Count() const;
    /// The n-th chosen frame, n below `Count()`.
    u64 operator[](u64 n) const;

  private:
    std::vector<SRun> runs_;
};

/// What `--frames` says: parts separated by commas, each a frame, "first-last" or "first:last", a range perhaps with
/// "xSTEP" behind. Frames are counted from 0, ends are included, and negative numbers count from the end: -1 is the
/// last frame. "0-99,200-400x10,-1", "-10--1".
class CFrameSelection {
  public:
    /// All frames.
    CFrameSelection() = default;
    /// The text of an option. Throws wrong usage, as all that follow, for one that does not follow the grammar.
    explicit CFrameSelection(const std::string& text, const std::string& option = "--frames");

    /// The frames of a source that has `count` of them, at least one. Throws for a frame that it does not have and a
    /// range that runs backwards.
    CFrameNumbers Of(u64 count) const;
    /// The one frame that is chosen. Throws for several.
    u64 OneOf(u64 count) const;

  private:
    struct SPart {
        i64 first = 0;
        i64 last = -1;
        u64 step = 1;
    };

    std::string option_;
    std::string text_;
    std::vector<SPart> parts_ = {SPart{}};
};

}  // namespace ovix::app
