#pragma once

#include <string>
#include <vector>

namespace ovix::app {

/// A point of a letter; the height of a capital is 1, y grows downwards from the baseline.
struct SPenPoint {
    float x = 0;
    float y = 0;
};

/// One movement of the pen, as a chain of straight pieces.
using PenStroke = std::vector<SPenPoint>;

/// A line of text as the movements of a round pen, beginning at x = 0. UTF-8: the printable ASCII characters and
/// `° ² ³ µ · × ± Δ σ – − …`; anything else is drawn as a box. Digits are all of one width.
struct SPenText {
    std::vector<PenStroke> strokes;
    float width = 0;
};
SPenText WriteWithPen(const std::string& text);

}  // namespace ovix::app
