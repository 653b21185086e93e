#include "apps/ovix/cli/regions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/ovix/facts/json_field.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

using measure::EShape;
using measure::SShape;

namespace {

constexpr const char* kShapes =
    "x,y,width,height, or with a kind spot:x,y, line:x0,y0,x1,y1, circle:x,y,radius or polygon:x0,y0,x1,y1,..., each "
    "perhaps with name= before it";

/// The numbers of one text, which knows how to complain.
class CShapeText {
  public:
    CShapeText(const std::string& option, const std::string& text) : option_(option), text_(text) {}

    SShape Parse(std::size_t number) const {
        SShape shape{.name = fmt::format("roi{}", number)};
        std::string_view rest = text_;
        if (const auto sign = rest.find('='); sign != rest.npos) {
            shape.name = rest.substr(0, sign);
            rest.remove_prefix(sign + 1);
            if (shape.name.empty()) Fail();
        }
        if (const auto colon = rest.find(':'); colon != rest.npos) {
            const std::string kind(rest.substr(0, colon));
            shape.kind = ParseChoice<EShape>(option_, kind,
                                             {{"rect", EShape::Rectangle},
                                              {"spot", EShape::Spot},
                                              {"line", EShape::Line},
                                              {"circle", EShape::Circle},
                                              {"polygon", EShape::Polygon}});
            rest.remove_prefix(colon + 1);
        }
        return Filled(std::move(shape), SplitText(rest, ','));
    }

  private:
    SShape Filled(SShape shape, std::vector<std::string_view> parts) const {
        if (shape.kind == EShape::Circle) {
            const auto radius = parts.size() == 3 ? ParseNumber<double>(parts.back()) : std::nullopt;
            if (!radius) Fail();
            shape.radius = *radius;
            parts.pop_back();
        }
        if (parts.size() % 2) Fail();
        for (std::size_t i = 0; i < parts.size(); i += 2) {
            const auto x = ParseNumber<u16>(parts[i]), y = ParseNumber<u16>(parts[i + 1]);
            if (!x || !y) Fail();
            shape.points.push_back({*x, *y});
        }
        if (shape.kind != EShape::Rectangle) return shape;
        if (shape.points.size() != 2 || !shape.points[1].x || !shape.points[1].y) Fail();
        const auto [from, size] = std::pair(shape.points[0], shape.points[1]);
        shape.points[1] = {from.x + size.x - 1, from.y + size.y - 1};
        return shape;
    }
    [[noreturn]] void Fail() const {
        throw CFault(
            {.exit = ExitUsage, .problem = option_, .expected = kShapes, .found = fmt::format("\"{}\"", text_)});
    }

    const std::string& option_;
    const std::string& text_;
};

SShape ShapeOf(const CField& field) {
    SShape shape{.name = field["name"].Text()};
    const std::string kind = field["kind"].Text();
    bool known = false;
    for (const EShape one : {EShape::Spot, EShape::Line, EShape::Rectangle, EShape::Circle, EShape::Polygon}) {
        if (kind != measure::ShapeWord(one)) continue;
        shape.kind = one;
        known = true;
    }
    field["kind"].Require(known, "spot, line, rectangle, circle or polygon");
    field["points"].ForEach([&](const CField& point) {
        std::vector<int> at;
        point.ForEach([&](const CField& number) { at.push_back(number.Integer(0, 65535)); });
        point.Require(at.size() == 2, "two numbers, x and y");
        shape.points.push_back({at[0], at[1]});
    });
    if (shape.kind == EShape::Circle) shape.radius = field["radius"].Number();
    return shape;
}

}  // namespace

std::vector<SShape> ParseShapes(const std::string& option, const std::vector<std::string>& texts) {
    std::vector<SShape> shapes;
    shapes.reserve(texts.size());
    for (const std::string& text : texts) shapes.push_back(CShapeText(option, text).Parse(shapes.size() + 1));
    return shapes;
}

std::vector<SShape> ParseLines(const std::string& option, std::vector<std::string> texts) {
    for (std::string& text : texts) {
        const std::size_t sign = text.find('=');
        text.insert(sign == text.npos ? 0 : sign + 1, "line:");
    }
    return ParseShapes(option, texts);
}

std::vector<SShape> ReadRegionFile(const std::string& path) {
    const std::string name = path == "-" ? "standard input" : path;
    RememberInput(path);
    const Json document = ReadJson(path, "regions");
    const CField root(name, document, "");
    root["kind"].RequireText("regions");
    root["schema"].Integer(kSchemaVersion, kSchemaVersion);
    std::vector<SShape> shapes;
    root["regions"].ForEach([&](const CField& region) { shapes.push_back(ShapeOf(region)); });
    root["regions"].Require(!shapes.empty(), "a region or more");
    return shapes;
}

std::vector<measure::CPixelSet> PixelsOf(std::vector<SShape> shapes, u16 width, u16 height) {
    std::vector<measure::CPixelSet> regions;
    for (SShape& shape : shapes) {
        const auto bears = [&](const measure::CPixelSet& other) { return other.Shape().name == shape.name; };
        if (std::ranges::any_of(regions, bears))
            throw UsageFault("region " + shape.name + ": another region bears this name");
        try {
            regions.emplace_back(std::move(shape), width, height);
        } catch (const measure::CError& error) {
            throw FaultOf(error);
        }
    }
    return regions;
}

void CRegionArguments::Add(CLI::App& verb, const char* group, const char* use) {
    verb.add_option("--roi", texts_,
                    fmt::format("{}: x,y,w,h, spot:x,y, line:x0,y0,x1,y1, circle:x,y,radius or "
                                "polygon:x0,y0,x1,y1,..., each perhaps with name= before it; repeatable",
                                use))
        ->type_name("REGION")
        ->allow_extra_args(false)
        ->group(group);
    verb.add_option("--regions", file_, "regions from a JSON file, - for the standard input")
        ->type_name("FILE")
        ->group(group);
}

std::vector<measure::CPixelSet> CRegionArguments::Given(u16 width, u16 height) const {
    std::vector<SShape> shapes;
    if (!file_.empty()) shapes = ReadRegionFile(file_);
    for (SShape& shape : ParseShapes("--roi", texts_)) shapes.push_back(std::move(shape));
    return PixelsOf(std::move(shapes), width, height);
}

std::vector<measure::CPixelSet> CRegionArguments::Of(u16 width, u16 height) const {
    if (AreGiven()) return Given(width, height);
    return PixelsOf({SShape::Rectangle("frame", 0, 0, width, height)}, width, height);
}

}  // namespace ovix::app
