#pragma once

#include <string>
#include <vector>

#include "measure/measure.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// The shapes that texts of an option tell: "[NAME=][KIND:]NUMBERS", where KIND is rect (x,y,width,height; the one that
/// is meant where none is given), spot (x,y), line (x0,y0,x1,y1), circle (x,y,radius) or polygon (x0,y0,x1,y1,...). One
/// without a name is "roi1", "roi2" and so on by its place. Throws wrong usage that names the option.
std::vector<measure::SShape> ParseShapes(const std::string& option, const std::vector<std::string>& texts);

/// The shapes of a file of regions:
///
///     {"schema": 1, "kind": "regions", "regions": [
///       {"name": "bearing", "kind": "circle", "points": [[427, 276]], "radius": 30},
///       {"name": "pipe", "kind": "rectangle", "points": [[10, 20], [49, 39]]}]}
///
/// Points are those of `measure::SShape`. Throws `CFault` that names the place in the file.
std::vector<measure::SShape> ReadRegionFile(const std::string& path);

/// The options that say which pixels of a frame are looked at.
class CRegionArguments {
  public:
    /// `use` says what a region is for.
    void Add(CLI::App& verb, const char* group, const char* use = "a region (else the whole frame)");
    /// Those that were given, each with a name of its own.
    std::vector<measure::CPixelSet> Given(u16 width, u16 height) const;
    /// The same, or the whole frame where none was given.
    std::vector<measure::CPixelSet> Of(u16 width, u16 height) const;
    bool AreGiven() const { return !texts_.empty() || !file_.empty(); }

  private:
    std::vector<std::string> texts_;
    std::string file_;
};

/// Lines by their ends, as in `ParseShapes` but with no kind given.
std::vector<measure::SShape> ParseLines(const std::string& option, std::vector<std::string> texts);

/// The pixels of shapes in frames of a size. Throws wrong usage for one that lies outside, and for two of one name.
std::vector<measure::CPixelSet> PixelsOf(std::vector<measure::SShape> shapes, u16 width, u16 height);

}  // namespace ovix::app
