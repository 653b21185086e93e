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
constexpr SColour kLight = ColourOf(0xFFFFFF);
constexpr SColour kDark = ColourOf(0x000000);
constexpr int kSmallestLongSide = 480;

/// All measures follow from the height of a capital letter, which follows from the picture's size.
struct SMeasures {
    SMeasures(const SSeries& series, int zoom) {
        const int longSide = std::max<int>(series.width, series.height);
        scale = zoom ? zoom : std::max(1, (kSmallestLongSide + longSide - 1) / longSide);
        letter = std::max(10, longSide * scale / 60);
    }
    int Letters(double count) const { return static_cast<int>(std::lround(count * letter)); }

    int scale = 1;
    int letter = 10;
};

/// What each pixel is, and how many are of each kind.
struct SKinds {
    SKinds(const SPicture& picture, SRange range) : ofPixel(picture.values.size()) {
        for (std::size_t i = 0; i < ofPixel.size(); ++i) {
            const EPixelKind kind =
                KindOf(picture.values[i], picture.status.empty() ? u8{0} : picture.status[i], range);
            ofPixel[i] = static_cast<u8>(kind);
            ++count[kind];
        }
    }
    std::string Share(EPixelKind kind) const {
        const double percent = 100.0 * static_cast<double>(count[kind]) / static_cast<double>(ofPixel.size());
        return percent < 0.1 ? fmt::format("{} px", count[kind]) : fmt::format("{:.1f} %", percent);
    }

    std::vector<u8> ofPixel;
    u64 count[PixelKinds] = {};
};

/// What the colours outside the palette mean.
struct SMeaning {
    EPixelKind kind;
    const char* text;
};
constexpr SMeaning kMeanings[] = {{PixelBelow, "below the palette"},
                                  {PixelAbove, "above the palette"},
                                  {PixelUncalibrated, "not calibrated"},
                                  {PixelUnder, "below the camera\u2019s range"},
                                  {PixelOver, "above the camera\u2019s range"},
                                  {PixelNoData, "no data"}};

struct SLegendEntry {
    EPixelKind kind;
    std::string text;
    int x;     ///< of the sample, from the left end
    int line;  ///< from 0
};

/// A frame of a sequence bears its number.
std::string CaptionOf(const SSeries& series, const SPicture& picture) {
    if (series.frames <= 1) return picture.caption;
    return fmt::format("frame {}{}{}", picture.frame, picture.caption.empty() ? "" : "  ·  ", picture.caption);
}

/// Draws one picture, part by part.
class CDrawing {
  public:
    CDrawing(const SSeries& series, const SPicture& picture, const SLook& look)
        : series_(series),
          picture_(picture),
          options_(look.options),
          range_(look.range),
          caption_(CaptionOf(series, picture)),
          m_(series, options_.zoom),
          kinds_(picture, look.range),
          ticks_(Ticks(range_, std::max(BarHeight() / m_.Letters(5), 2))),
          out_(Lay()) {}

    SThermalPicture Draw() {
        CPictureMarks marks(out_.canvas, out_.image, m_.scale, m_.letter, ImageRoom());
        DrawHead();
        IsVideo() ? DrawVideo() : DrawImage();
        if (!IsVideo()) {
            for (const float level : options_.isotherms) marks.Isotherm(picture_, series_.width, level);
            DrawBar();
            for (const float level : options_.isotherms) {
                if (range_.low <= level && level <= range_.high) marks.LineAcross(out_.bar, RowOfBar(level));
            }
        }
        for (const measure::CPixelSet& mark : options_.marks) marks.Region(mark);
        if (options_.markExtremes && !IsVideo()) marks.Extremes(picture_, series_.width, series_.unit);
        DrawFoot();
        return std::move(out_);
    }

  private:
    bool IsVideo() const { return !picture_.colours.empty(); }
    double Size() const { return m_.letter; }
    int ImageHeight() const { return series_.height * m_.scale; }
    int BarHeight() const { return std::max(ImageHeight(), m_.Letters(14)); }

    SThermalPicture Lay() {
        const int edge = m_.Letters(1.8);
        const int head = m_.Letters(4.4);
        double labels = 0;
        for (const STick& tick : ticks_) labels = std::max(labels, CCanvas::TextWidth(tick.label, Size()));
        const SBox image{edge, head, series_.width * m_.scale, ImageHeight()};
        SBox bar{edge + ImageRoom() + m_.Letters(1.8), head, m_.Letters(1.9), BarHeight()};
        if (IsVideo()) return LayVideo(image);
        const int labelRoom = m_.Letters(1.4) + static_cast<int>(std::ceil(labels));
        const int unitRoom = static_cast<int>(std::ceil(CCanvas::TextWidth(series_.unit.Label(), Size())));
        const int width = bar.x + std::max(bar.width + labelRoom, std::min(unitRoom, m_.Letters(16))) + edge;
        LayLegend(width - 2 * edge);
        const int legendLines = legend_.empty() ? 0 : legend_.back().line + 1;
        const int foot = (caption_.empty() ? 0 : m_.Letters(2.4)) + legendLines * m_.Letters(2.4);
        const int height = head + BarHeight() + foot + m_.Letters(foot ? 1.4 : 1.8);
        if (kinds_.count[PixelAbove]) {
            bar.y += Cap();
            bar.height -= Cap();
        }
        if (kinds_.count[PixelBelow]) bar.height -= Cap();
        return {CCanvas(width, height, kGround), image, bar, m_.scale};
    }
    SThermalPicture LayVideo(const SBox& image) const {
        const int width = ImageRoom() + 2 * image.x;
        const int foot = caption_.empty() ? m_.Letters(1.8) : m_.Letters(3.8);
        return {
            CCanvas(width, image.y + image.height + foot, kGround), image, {width - image.x, image.y, 0, 0}, m_.scale};
    }
    /// The block in the colour of what lies beyond at an end of the bar, with the gap before it.
    int Cap() const { return m_.Letters(1.5); }
    int CapGap() const { return m_.Letters(0.35); }
    /// As wide as the image, and as wide as its title and the names in it need.
    int ImageRoom() const { return std::max(series_.width * m_.scale, m_.Letters(30)); }
    /// One entry behind the other, in as many lines as they need.
    void LayLegend(int room) {
        int x = 0, line = 0;
        for (const SMeaning& meaning : kMeanings) {
            if (!kinds_.count[meaning.kind]) continue;
            const std::string text = fmt::format("{}  {}", meaning.text, kinds_.Share(meaning.kind));
            const int width = m_.Letters(1.7) + static_cast<int>(std::ceil(CCanvas::TextWidth(text, Size())));
            if (x > 0 && x + width > room) x = 0, ++line;
            legend_.push_back({meaning.kind, text, x, line});
            x += width + m_.Letters(2.2);
        }
    }

    void DrawHead() {
        const int baseline = m_.Letters(2.9), left = out_.image.x, right = out_.bar.x;
        out_.canvas.Text(left, baseline, Size() * 1.15, series_.title, kInk, right - left - Size());
        if (!IsVideo()) out_.canvas.Text(right, baseline, Size(), series_.unit.Label(), kInk);
    }

    /// A thin line around, so that the dark end of the palette does not run into the ground.
    void DrawEdge(const SBox& box) {
        const int line = Line();
        out_.canvas.Frame(box.x - line, box.y - line, box.width + 2 * line, box.height + 2 * line, line, kEdge);
    }
    int Line() const { return std::max(1, m_.letter / 10); }

    void DrawVideo() {
        DrawEdge(out_.image);
        for (std::size_t i = 0; i < picture_.colours.size(); ++i) {
            const int x = static_cast<int>(i % series_.width), y = static_cast<int>(i / series_.width);
            out_.canvas.Fill(out_.image.x + x * m_.scale, out_.image.y + y * m_.scale, m_.scale, m_.scale,
                             ColourOf(picture_.colours[i]));
        }
    }

    void DrawImage() {
        DrawEdge(out_.image);
        std::size_t i = 0;
        for (int y = 0; y < series_.height; ++y) {
            for (int x = 0; x < series_.width; ++x, ++i) {
                const auto kind = static_cast<EPixelKind>(kinds_.ofPixel[i]);
                const SColour colour = ColourOfPixel(*options_.palette, picture_.values[i], kind, range_);
                const SBox box{out_.image.x + x * m_.scale, out_.image.y + y * m_.scale, m_.scale, m_.scale};
                out_.canvas.Fill(box.x, box.y, box.width, box.height, colour);
                if (kind == PixelUncalibrated) Hatch(box, colour);
            }
        }
    }
    /// Slanted lines over a colour, dark on light and light on dark, that go on from one box to the next.
    void Hatch(const SBox& box, SColour ground) {
        const int distance = std::max(5, m_.letter / 2);
        const bool light = 2 * ground.red + 5 * ground.green + ground.blue > 8 * 110;
        for (int y = box.y; y < box.y + box.height; ++y) {
            for (int x = box.x; x < box.x + box.width; ++x) {
                if ((x + y) % distance < Line()) out_.canvas.Fill(x, y, 1, 1, light ? kDark : kLight);
            }
        }
    }

    int RowOfBar(double value) const {
        const double share = (range_.high - value) / (double{range_.high} - range_.low);
        return out_.bar.y + static_cast<int>(std::lround(share * (out_.bar.height - 1)));
    }

    void DrawBar() {
        const SBox& bar = out_.bar;
        DrawEdge(bar);
        for (int row = 0; row < bar.height; ++row) {
            out_.canvas.Fill(bar.x, bar.y + row, bar.width, 1,
                             options_.palette->At(1 - static_cast<double>(row) / std::max(1, bar.height - 1)));
        }
        const int block = Cap() - CapGap();
        if (kinds_.count[PixelAbove]) out_.canvas.Fill(bar.x, bar.y - Cap(), bar.width, block, kAboveColour);
        if (kinds_.count[PixelBelow]) {
            out_.canvas.Fill(bar.x, bar.y + bar.height + CapGap(), bar.width, block, kBelowColour);
        }
        const int right = bar.x + bar.width;
        for (const STick& tick : ticks_) {
            const int y = RowOfBar(tick.value);
            out_.canvas.Fill(right, y - Line() / 2, m_.Letters(0.5), Line(), kDimInk);
            out_.canvas.Text(right + m_.Letters(1.0), y + Size() * 0.5, Size(), tick.label, kInk);
        }
    }

    void DrawFoot() {
        int top = out_.image.y + (IsVideo() ? ImageHeight() : BarHeight());
        const int left = out_.image.x;
        if (!caption_.empty()) {
            out_.canvas.Text(left, top + m_.Letters(2.3), Size(), caption_, kDimInk, out_.canvas.Width() - 2 * left);
            top += m_.Letters(2.4);
        }
        for (const SLegendEntry& entry : legend_) {
            const int line = top + entry.line * m_.Letters(2.4);
            const SBox sample{left + entry.x, line + m_.Letters(1.3), m_.letter, m_.letter};
            const SColour colour = ColourOfPixel(*options_.palette, (range_.low + range_.high) / 2, entry.kind, range_);
            out_.canvas.Fill(sample.x, sample.y, sample.width, sample.height, colour);
            if (entry.kind == PixelUncalibrated) Hatch(sample, colour);
            out_.canvas.Text(sample.x + m_.Letters(1.7), line + m_.Letters(2.3), Size(), entry.text, kInk);
        }
    }

    const SSeries& series_;
    const SPicture& picture_;
    const SWriteOptions& options_;
    SRange range_;
    std::string caption_;
    SMeasures m_;
    SKinds kinds_;
    std::vector<STick> ticks_;
    std::vector<SLegendEntry> legend_;
    SThermalPicture out_;
};

}  // namespace

SThermalPicture DrawThermalPicture(const SSeries& series, const SPicture& picture, const SLook& look) {
    return CDrawing(series, picture, look).Draw();
}

}  // namespace ovix::app
