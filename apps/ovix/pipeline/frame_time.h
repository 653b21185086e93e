#pragma once

#include <optional>
#include <string>

#include "core/core.h"

namespace ovix::app {

/// A decoder that finds no time in a frame answers the present one. This tells the two apart: made before the decoder
/// is asked, it takes a time between then and now for the decoder's own.
class CFrameClock {
  public:
    /// Nothing when the frame carries no time.
    std::optional<CDateTime> Carried(const CDateTime& time) const {
        const i64 ticks = time.GetTimestamp();
        if (ticks >= before_.GetTimestamp() && ticks <= CDateTime().GetTimestamp()) return {};
        return time;
    }

  private:
    CDateTime before_;
};

/// "2026-11-21T08:15:00.250000Z".
inline std::string TimeText(const CDateTime& time) { return time.Format(L"%Y-%m-%dT%H:%M:%S.%fZ").GetUTF8(); }

}  // namespace ovix::app
