#pragma once

#include <string>
#include <vector>

#include "measure/measure.h"

namespace ovix::app {

/// What `--frames` says: parts separated by commas, each a frame, "first-last" or "first:last", a range perhaps with
/// "xSTEP" behind. Frames are counted from 0, ends are included, and negative numbers count from the end: -1 is the
/// last frame. "0-99,200-400x10,-1", "-10--1".
class CFrameSelection {
  public:
    /// The text of an option. Throws wrong usage, as all that follow, for one that does not follow the grammar.
    explicit CFrameSelection(const std::string& text, const std::string& option = "--frames");

    /// The frames of a source that has `count` of them, at least one. Throws for a frame that it does not have and a
    /// range that runs backwards.
    measure::CFrameNumbers Of(u64 count) const;
    /// Those of a source whose frames come one after the other: numbers that rise. Throws for numbers from the end.
    measure::CFrameNumbers InOrder() const;
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
    std::vector<SPart> parts_;
};

}  // namespace ovix::app
