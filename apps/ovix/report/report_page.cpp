#include "apps/ovix/report/report_page.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/output/palette.h"
#include "apps/ovix/report/page_template.h"
#include "apps/ovix/status_flags.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

/// Of the data in the page; it rises when the page's program would have to change.
constexpr int kForm = 2;
constexpr std::string_view kDataPlace = "{{data}}";

std::size_t DataPlace() { return PageTemplate().find(kDataPlace); }

std::string HexColour(SColour c) { return fmt::format("{:02x}{:02x}{:02x}", c.red, c.green, c.blue); }

Json DescribePalettes() {
    Json palettes = Json::array();
    for (const SPalette& palette : Palettes()) {
        std::string colours;
        for (u32 rgb : palette.colours) colours += HexColour(ColourOf(rgb));
        palettes.push_back({{"name", palette.name}, {"colours", colours}});
    }
    return palettes;
}

Json DescribeColours() {
    return {{"below", HexColour(kBelowColour)},
            {"above", HexColour(kAboveColour)},
            {"under", HexColour(kUnderColour)},
            {"over", HexColour(kOverColour)},
            {"noData", HexColour(kNoDataColour)}};
}

Json DescribeFlags() {
    Json flags = Json::array();
    for (const SStatusFlag& flag : kStatusFlags) {
        flags.push_back({{"bit", flag.bit}, {"key", flag.key}, {"text", flag.text}});
    }
    return flags;
}

Json DescribeFrame(const SReportFrame& frame) {
    Json json{{"number", frame.number}};
    if (frame.time) json["time"] = *frame.time;
    if (frame.counter) json["counter"] = *frame.counter;
    if (frame.preset) json["preset"] = *frame.preset;
    return json;
}

Json DescribeSection(const SFactSection& section) {
    return {{"title", section.title}, {"columns", section.columns}, {"rows", section.rows}};
}

Json DescribeRegion(const measure::SShape& shape) {
    Json points = Json::array();
    for (const SPoint& point : shape.points) points.push_back({point.x, point.y});
    Json json{{"name", shape.name}, {"kind", measure::ShapeWord(shape.kind)}, {"points", points}};
    if (shape.kind == measure::EShape::Circle) json["radius"] = shape.radius;
    return json;
}

template <class T, class Describe>
Json ListOf(const std::vector<T>& items, Describe describe) {
    Json list = Json::array();
    for (const T& item : items) list.push_back(describe(item));
    return list;
}

Json DescribeReport(const SReport& report) {
    const u32 bin = report.packing.bin;
    const std::optional<SRange>& range = report.figures.range.Widest();
    static constexpr const char* kScales[] = {"C", "F", "K", "R"};
    return {
        {"form", kForm},
        {"generator", "ovix " OVIX_VERSION},
        {"title", report.title},
        {"subtitle", report.subtitle},
        {"width", (report.sourceWidth + bin - 1) / bin},
        {"height", (report.sourceHeight + bin - 1) / bin},
        {"sourceWidth", report.sourceWidth},
        {"sourceHeight", report.sourceHeight},
        {"bin", bin},
        {"quantity", report.unit.quantity},
        {"unit", report.unit.symbol},
        {"difference", report.unit.difference},
        {"scale", report.scale ? Json(kScales[*report.scale]) : Json()},
        {"step", report.packing.step},
        {"range", range ? Json({range->low, range->high}) : Json()},
        {"flags", DescribeFlags()},
        {"outsideBit", kStatusOutside},
        {"underBit", kStatusUnder},
        {"overBit", kStatusOver},
        {"noDataBit", kStatusNoData},
        {"notCounted", reduce::kNotCounted},
        {"colours", DescribeColours()},
        {"palettes", DescribePalettes()},
        {"frames", ListOf(report.frames, DescribeFrame)},
        {"regions", ListOf(report.regions, DescribeRegion)},
        {"facts", ListOf(report.facts, DescribeSection)},
    };
}

/// JSON that cannot end the element in which it stands, nor begin a comment there, whatever its texts hold.
std::string ElementText(const Json& json) {
    std::string text;
    for (char c : JsonText(json)) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

}  // namespace

CReportPage::CReportPage(Sink sink) : sink_(std::move(sink)) { Write(PageTemplate().substr(0, DataPlace())); }

void CReportPage::Add(const SPackedFrame& frame) {
    Write("<script class=\"ovix-frame\" type=\"text/plain\">");
    Write(frame.text);
    Write("</script>\n");
}

void CReportPage::Finish(const SReport& report) {
    Write("<script id=\"ovix-head\" type=\"application/json\">");
    Write(ElementText(DescribeReport(report)));
    Write("</script>");
    Write(PageTemplate().substr(DataPlace() + kDataPlace.size()));
}

u64 CReportPage::FixedSize() {
    constexpr u64 kFactsOfSource = 24 << 10;  // palettes and a long calibration
    return PageTemplate().size() + kFactsOfSource;
}

void CReportPage::Write(std::string_view text) {
    sink_(text);
    size_ += text.size();
}

}  // namespace ovix::app
