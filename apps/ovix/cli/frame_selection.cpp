#include "apps/ovix/cli/frame_selection.h"

#include <fmt/format.h>

#include <charconv>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

/// Takes a number off the front of the text; false when none stands there.
template <class T>
bool TakeNumber(std::string_view& text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{}) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

CFrameSelection::CFrameSelection(const std::string& text, const std::string& option) : option_(option), text_(text) {
    for (std::string_view rest : SplitText(text, ',')) {
        SPart part;
        bool fits = TakeNumber(rest, part.first);
        part.last = part.first;
        if (fits && TakeOneOf(rest, "-:")) fits = TakeNumber(rest, part.last);
        if (fits && TakeOneOf(rest, "x")) fits = TakeNumber(rest, part.step) && part.step > 0;
        if (!fits || !rest.empty())
            throw CFault({.exit = ExitUsage,
                          .problem = option,
                          .expected = "frames and ranges as in 0-99,200-400x10,-1",
                          .found = "\"" + text + "\""});
        parts_.push_back(part);
    }
}

measure::CFrameNumbers CFrameSelection::Of(u64 count) const {
    const auto place = [&](i64 frame) {
        const u64 number = frame < 0 ? count + static_cast<u64>(frame) : static_cast<u64>(frame);
        if (number >= count)
            throw UsageFault(fmt::format("{} {}: there is no frame {}; the source has {} (0 to {})", option_, text_,
                                         frame, count, count - 1));
        return number;
    };
    std::vector<measure::CFrameNumbers::SRun> runs;
    for (const SPart& part : parts_) {
        const measure::CFrameNumbers::SRun run{place(part.first), place(part.last), part.step};
        if (run.first > run.last)
            throw UsageFault(fmt::format("{} {}: {} lies behind {}", option_, text_, part.first, part.last));
        runs.push_back(run);
    }
    return measure::CFrameNumbers(std::move(runs));
}

measure::CFrameNumbers CFrameSelection::InOrder() const {
    std::vector<measure::CFrameNumbers::SRun> runs;
    u64 next = 0;
    for (const SPart& part : parts_) {
        if (part.first < 0 || part.last < part.first || static_cast<u64>(part.first) < next)
            throw CFault({.exit = ExitUsage,
                          .problem = option_,
                          .expected = "rising numbers of frames that come one after the other",
                          .found = "\"" + text_ + "\""});
        runs.push_back({static_cast<u64>(part.first), static_cast<u64>(part.last), part.step});
        next = static_cast<u64>(part.last) + 1;
    }
    return measure::CFrameNumbers(std::move(runs));
}

u64 CFrameSelection::OneOf(u64 count) const {
    const measure::CFrameNumbers chosen = Of(count);
    if (chosen.Count() != 1) throw UsageFault(option_ + ": expected one frame, found \"" + text_ + "\"");
    return chosen[0];
}

}  // namespace ovix::app
