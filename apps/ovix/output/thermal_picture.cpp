#include "apps/ovix/output/thermal_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace ovix::app {
namespace {

constexpr SColour kGround = ColourOf(0x15171C);
constexpr SColour kInk = ColourOf(0xE8EAED);
constexpr SColour kDimInk = ColourOf(0xA3A9B1);
constexpr SColour kEdge = ColourOf(0x3A3F47);
constexpr SColour kMarkColour = ColourOf(0xFFFFFF);
constexpr SColour kShadow = ColourOf(0x000000);
constexpr int kSmallestLongSide = 480;

/// All measures follow from the height of a capital letter, which follows from the picture's size.
struct SMeasures {
    SMeasures(const SSeries& series) {
        const int longSide = std::max<int>(series.width, series.height);
        scale = std::max(1, (kSmallestLongSide + longSide - 1) / longSide);
        letter = std::max(10, longSide * scale / 60);
    }
    int Letters(double count) const { return static_cast<int>(std::lround(count * letter)); }

    int scale = 1;
    int letter = 10;
};

std::string Fit(std::string text, float size, float room) {
    if (CCanvas::TextWidth(text, size) <= room) return text;
    while (!text.empty() && CCanvas::TextWidth(text + "…", size) > room) {
        while (!text.empty() && (text.back() & 0xC0) == 0x80) text.pop_back();
        if (!text.empty()) text.pop_back();
    }
    return text + "…";
}

struct SLegendEntry {
    SColour colour;
    std::string text;
};

/// How many pixels are of each kind that has a colour of its own.
struct SKinds {
    u64 of[4] = {};
    u64 all = 0;

    std::string Share(EPixelKind kind) const {
        const double percent = 100.0 * static_cast<double>(of[kind]) / static_cast<double>(all);
        return percent < 0.1 ? fmt::format("{} px", of[kind]) : fmt::format("{:.1f} %", percent);
    }
    std::vector<SLegendEntry> Legend() const {
        std::vector<SLegendEntry> legend;
        if (of[PixelUnder]) legend.push_back({kUnderColour, "under  " + Share(PixelUnder)});
        if (of[PixelOver]) legend.push_back({kOverColour, "over  " + Share(PixelOver)});
        if (of[PixelNoData]) legend.push_back({kNoDataColour, "no data  " + Share(PixelNoData)});
        return legend;
    }
};

SKinds CountKinds(const SPicture& picture, SRange range) {
    SKinds kinds;
    kinds.all = picture.values.size();
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        ++kinds.of[KindOf(picture.values[i], picture.status.empty() ? u8{0} : picture.status[i], range)];
    }
    return kinds;
}

/// A frame of a sequence bears its number.
std::string CaptionOf(const SSeries& series, const SPicture& picture) {
    if (series.frames <= 1) return picture.caption;
    return fmt::format("frame {}{}{}", picture.frame, picture.caption.empty() ? "" : "  ·  ", picture.caption);
}

/// Draws one picture, part by part.
class CDrawing {
  public:
    CDrawing(const SSeries& series, const SPicture& picture, SRange range)
        : series_(series),
          picture_(picture),
          range_(range),
          caption_(CaptionOf(series, picture)),
          m_(series),
          kinds_(CountKinds(picture, range)),
          ticks_(Ticks(range, std::max(BarHeight() / m_.Letters(5), 2))),
          out_(Lay()) {}

    SThermalPicture Draw(const std::vector<SRegion>& marks) {
        DrawHead();
        DrawImage();
        for (const SRegion& mark : marks) DrawMark(mark);
        DrawBar();
        DrawFoot();
        return std::move(out_);
    }

  private:
    float Size() const { return static_cast<float>(m_.letter); }
    int ImageHeight() const { return series_.height * m_.scale; }
    int BarHeight() const { return std::max(ImageHeight(), m_.Letters(14)); }

    SThermalPicture Lay() const {
        const int edge = m_.Letters(1.8);
        const int head = m_.Letters(4.4);
        float labels = 0;
        for (const STick& tick : ticks_) labels = std::max(labels, CCanvas::TextWidth(tick.label, Size()));
        const int imageRoom = std::max(series_.width * m_.scale, m_.Letters(30));
        const SBox image{edge, head, series_.width * m_.scale, ImageHeight()};
        SBox bar{edge + imageRoom + m_.Letters(1.8), head, m_.Letters(1.9), BarHeight()};
        const int labelRoom = m_.Letters(1.4) + static_cast<int>(std::ceil(labels));
        const int unitRoom = static_cast<int>(std::ceil(CCanvas::TextWidth(series_.unit.Label(), Size())));
        const int width = bar.x + std::max(bar.width + labelRoom, std::min(unitRoom, m_.Letters(16))) + edge;
        const int foot = (caption_.empty() ? 0 : m_.Letters(2.4)) + (HasLegend() ? m_.Letters(2.4) : 0);
        const int height = head + BarHeight() + foot + m_.Letters(foot ? 1.4 : 1.8);
        if (kinds_.of[PixelOver]) {
            bar.y += Cap();
            bar.height -= Cap();
        }
        if (kinds_.of[PixelUnder]) bar.height -= Cap();
        return {CCanvas(width, height, kGround), image, bar, m_.scale};
    }
    /// The block in the colour of under or over at an end of the bar, with the gap before it.
    int Cap() const { return m_.Letters(1.5); }
    int CapGap() const { return m_.Letters(0.35); }
    bool HasLegend() const { return kinds_.of[PixelShown] != kinds_.all; }

    void DrawHead() {
        const auto baseline = static_cast<float>(m_.Letters(2.9));
        const float left = static_cast<float>(out_.image.x);
        const float right = static_cast<float>(out_.bar.x);
        out_.canvas.Text(left, baseline, Size() * 1.15f, Fit(series_.title, Size() * 1.15f, right - left - Size()),
                         kInk);
        out_.canvas.Text(right, baseline, Size(), series_.unit.Label(), kInk);
    }

    /// A thin line around, so that the dark end of the palette does not run into the ground.
    void DrawEdge(const SBox& box) {
        const int line = Line();
        out_.canvas.Frame(box.x - line, box.y - line, box.width + 2 * line, box.height + 2 * line, line, kEdge);
    }
    int Line() const { return std::max(1, m_.letter / 10); }

    void DrawImage() {
        DrawEdge(out_.image);
        for (int y = 0; y < series_.height; ++y) {
            for (int x = 0; x < series_.width; ++x) {
                const auto i = static_cast<std::size_t>(y) * series_.width + static_cast<std::size_t>(x);
                const float value = picture_.values[i];
                const EPixelKind kind = KindOf(value, picture_.status.empty() ? u8{0} : picture_.status[i], range_);
                out_.canvas.Fill(out_.image.x + x * m_.scale, out_.image.y + y * m_.scale, m_.scale, m_.scale,
                                 ColourOfPixel(value, kind, range_));
            }
        }
    }

    /// A light line between dark ones shows on every colour.
    void DrawMark(const SRegion& mark) {
        const int line = Line();
        const SBox box{out_.image.x + mark.x * m_.scale, out_.image.y + mark.y * m_.scale, mark.width * m_.scale,
                       mark.height * m_.scale};
        out_.canvas.Frame(box.x - line, box.y - line, box.width + 2 * line, box.height + 2 * line, line, kShadow);
        out_.canvas.Frame(box.x + line, box.y + line, box.width - 2 * line, box.height - 2 * line, line, kShadow);
        out_.canvas.Frame(box.x, box.y, box.width, box.height, line, kMarkColour);
        const bool roomAbove = box.y - m_.Letters(2) > out_.image.y;
        const int baseline = roomAbove ? box.y - m_.Letters(0.7) : box.y + m_.Letters(1.8);
        out_.canvas.TextOnPicture(static_cast<float>(box.x + (roomAbove ? 0 : m_.Letters(0.8))),
                                  static_cast<float>(baseline), Size(), mark.name, kMarkColour);
    }

    float ValueAtBarRow(int row) const {
        const float share = static_cast<float>(row) / static_cast<float>(std::max(1, out_.bar.height - 1));
        return range_.high + (range_.low - range_.high) * share;
    }

    void DrawBar() {
        const SBox& bar = out_.bar;
        DrawEdge(bar);
        for (int row = 0; row < bar.height; ++row) {
            out_.canvas.Fill(bar.x, bar.y + row, bar.width, 1,
                             PaletteColour(ValueAtBarRow(row), range_.low, range_.high));
        }
        const int block = Cap() - CapGap();
        if (kinds_.of[PixelOver]) out_.canvas.Fill(bar.x, bar.y - Cap(), bar.width, block, kOverColour);
        if (kinds_.of[PixelUnder]) {
            out_.canvas.Fill(bar.x, bar.y + bar.height + CapGap(), bar.width, block, kUnderColour);
        }
        const int right = bar.x + bar.width;
        for (const STick& tick : ticks_) {
            const double share = (range_.high - tick.value) / (double{range_.high} - range_.low);
            const int y = bar.y + static_cast<int>(std::lround(share * (bar.height - 1)));
            out_.canvas.Fill(right, y - Line() / 2, m_.Letters(0.5), Line(), kDimInk);
            out_.canvas.Text(static_cast<float>(right + m_.Letters(1.0)), static_cast<float>(y) + Size() * 0.5f, Size(),
                             tick.label, kInk);
        }
    }

    void DrawFoot() {
        int top = out_.image.y + BarHeight();
        const int left = out_.image.x;
        const auto room = static_cast<float>(out_.canvas.Width() - 2 * left);
        if (!caption_.empty()) {
            out_.canvas.Text(static_cast<float>(left), static_cast<float>(top + m_.Letters(2.3)), Size(),
                             Fit(caption_, Size(), room), kDimInk);
            top += m_.Letters(2.4);
        }
        auto x = static_cast<float>(left);
        for (const SLegendEntry& entry : kinds_.Legend()) {
            out_.canvas.Fill(static_cast<int>(x), top + m_.Letters(1.3), m_.letter, m_.letter, entry.colour);
            x += Size() * 1.7f;
            out_.canvas.Text(x, static_cast<float>(top + m_.Letters(2.3)), Size(), entry.text, kInk);
            x += CCanvas::TextWidth(entry.text, Size()) + Size() * 2.2f;
        }
    }

    const SSeries& series_;
    const SPicture& picture_;
    SRange range_;
    std::string caption_;
    SMeasures m_;
    SKinds kinds_;
    std::vector<STick> ticks_;
    SThermalPicture out_;
};

}  // namespace

SThermalPicture DrawThermalPicture(const SSeries& series, const SPicture& picture, SRange range,
                                   const std::vector<SRegion>& marks) {
    return CDrawing(series, picture, range).Draw(marks);
}

}  // namespace ovix::app
