#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/report/packing_choice.h"
#include "apps/ovix/units.h"
#include "core/core.h"
#include "measure/measure.h"

namespace ovix::app {

/// One frame of a page, beside its pixels. What the frame does not carry is absent.
struct SReportFrame {
    u64 number = 0;  ///< in its source
    std::optional<std::string> time = {};
    std::optional<u64> counter = {};
    std::optional<u8> preset = {};
};

/// A table for a reader, such as the scene or the findings; the first cell of a row names it.
struct SFactSection {
    std::string title;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
};

/// All that a page says beside its pixels. Texts are UTF-8 and may hold any character.
struct SReport {
    std::string title = {};
    std::string subtitle = {};
    u16 sourceWidth = 0;
    u16 sourceHeight = 0;
    SUnitText unit = {};                  ///< temperatures are in degrees Celsius, whatever is shown
    std::optional<ETempType> scale = {};  ///< in which temperatures are shown to begin with
    SPacking packing = {};
    SPackFigures figures = {};
    std::vector<SReportFrame> frames = {};
    std::vector<measure::SShape> regions = {};  ///< to begin with
    std::vector<SFactSection> facts = {};
};

/// Writes a page from its beginning to its end: frames one after the other, what is said of them last. The form is
/// described in docs/formats/report_page.md.
class CReportPage {
  public:
    using Sink = std::function<void(std::string_view)>;

    explicit CReportPage(Sink sink);
    void Add(const SPackedFrame& frame);
    void Finish(const SReport& report);
    /// Bytes written so far.
    u64 Size() const { return size_; }

    /// Bytes of a page beside its frames and the facts of each.
    static u64 FixedSize();

  private:
    void Write(std::string_view text);

    Sink sink_;
    u64 size_ = 0;
};

}  // namespace ovix::app
