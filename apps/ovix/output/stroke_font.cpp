#include "apps/ovix/output/stroke_font.h"

#include <map>
#include <string_view>

#include "core/core.h"

namespace ovix::app {
namespace {

// A letter is a list of strokes, a stroke a list of points, a point two hexadecimal digits: x from the left, y from
// below, where 0 is the foot of a g, 3 the baseline, 8 the height of an x and B that of a capital. A stroke that begins
// with ~ is a curve that starts and ends at its outer points and is drawn towards the others; o closes it to a ring.
struct SGlyph {
    u32 character;
    const char* strokes;
};
constexpr SGlyph kGlyphs[] = {
    {'!', "0B06 0303"},
    {'"', "0B09 2B29"},
    {'#', "131B 434B 0555 0959"},
    {'$', "~696B0B0767630305 3C32"},
    {'%', "036B o09292B0B o43636545"},
    {'&', "~63181B4B4806034366"},
    {'\'', "0B09"},
    {'(', "~2B090521"},
    {')', "~0B292501"},
    {'*', "2A26 0947 0749"},
    {'+', "0666 3933"},
    {',', "1301"},
    {'-', "0646"},
    {'.', "0303"},
    {'/', "014B"},
    {'0', "o03535B0B"},
    {'1', "193B33"},
    {'2', "~090B5B5703 0353"},
    {'3', "~090B5B5727 ~2757530305"},
    {'4', "434B0555"},
    {'5', "5B0B07 ~072858530305"},
    {'6', "o03535808 ~5A4B0B0605"},
    {'7', "0B5B23"},
    {'8', "o07575B0B o03535707"},
    {'9', "o06565B0B ~5958531304"},
    {':', "0303 0707"},
    {';', "1301 1707"},
    {'<', "490643"},
    {'=', "0555 0757"},
    {'>', "094603"},
    {'?', "~090B5B582725 2323"},
    {'@', "o25555828 ~5855757B0B0262"},
    {'A', "033B63 1656"},
    {'B', "030B ~0B2B5B572707 ~27676323 2303"},
    {'C', "~696B0B036365"},
    {'D', "030B ~0B2B6B632303"},
    {'E', "5B0B0353 0747"},
    {'F', "5B0B03 0747"},
    {'G', "~696B0B036367 6737"},
    {'H', "030B 636B 0767"},
    {'I', "030B"},
    {'J', "~4B47430305"},
    {'K', "030B 5B06 2853"},
    {'L', "0B0353"},
    {'M', "030B356B63"},
    {'N', "030B636B"},
    {'O', "o03636B0B"},
    {'P', "030B ~0B3B6B663606"},
    {'Q', "o03636B0B 3662"},
    {'R', "030B ~0B3B6B663606 3663"},
    {'S', "~696B0B0767630305"},
    {'T', "0B6B 3B33"},
    {'U', "~0B070363676B"},
    {'V', "0B336B"},
    {'W', "0B234A638B"},
    {'X', "036B 0B63"},
    {'Y', "0B376B 3733"},
    {'Z', "0B6B0363"},
    {'[', "2B0B0121"},
    {'\\', "0B41"},
    {']', "0B2B2101"},
    {'^', "092B49"},
    {'_', "0262"},
    {'`', "0B19"},
    {'a', "o03535808 5853"},
    {'b', "0B03 o03535808"},
    {'c', "~575808035354"},
    {'d', "5B53 o03535808"},
    {'e', "0656 ~565808035354"},
    {'f', "~13181B3B 0838"},
    {'g', "o03535808 ~5854500001"},
    {'h', "0B03 ~0608585653"},
    {'i', "0308 0A0A"},
    {'j', "~18141000 1A1A"},
    {'k', "0B03 4805 1643"},
    {'l', "0B03"},
    {'m', "0803 ~0608484643 ~4648888683"},
    {'n', "0803 ~0608585653"},
    {'o', "o03535808"},
    {'p', "0800 o03535808"},
    {'q', "5850 o03535808"},
    {'r', "0803 ~060838"},
    {'s', "~4748080645430304"},
    {'t', "~1A151333 0838"},
    {'u', "~0805035355 5853"},
    {'v', "082348"},
    {'w', "0813375368"},
    {'x', "0348 0843"},
    {'y', "0823 4810"},
    {'z', "08480343"},
    {'{', "~2B1B1606 ~06161121"},
    {'|', "010B"},
    {'}', "~0B1B1626 ~26161101"},
    {'~', "~050737356567"},
    {0xB0, "o08383B0B"},                // °
    {0xB1, "0767 3A34 0363"},           // ±
    {0xB2, "~0A0B3B3907 0737"},         // ²
    {0xB3, "~0A0B3B3919 ~1939370708"},  // ³
    {0xB5, "0800 ~0805035355 5853"},    // µ
    {0xB7, "0606"},                     // ·
    {0xD7, "0448 0844"},                // ×
    {0x394, "033B6303"},                // Δ
    {0x3C3, "o03535808 2868"},          // σ
    {0x2013, "0666"},                   // –
    {0x2212, "0666"},                   // −
    {0x2026, "0303 2323 4343"},         // …
};
constexpr const char* kUnknown = "030B5B5303";

constexpr float kUnitX = 0.8f / 8;  // capitals are 8 units high and somewhat narrow
constexpr float kUnitY = 1.0f / 8;
constexpr float kGap = 2.2f;
constexpr float kBlank = 3.5f;
constexpr float kDigitWidth = 5;
constexpr int kPiecesOfACurve = 8;

constexpr int Hex(char c) { return c <= '9' ? c - '0' : c - 'A' + 10; }

SPenPoint Mix(SPenPoint a, SPenPoint b, float t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

/// A quadratic B-spline: from the middle of one side of the control polygon to the middle of the next.
PenStroke Smooth(const PenStroke& control, bool ring) {
    const std::size_t n = control.size();
    const std::size_t first = ring ? 0 : 1;
    const std::size_t last = ring ? n - 1 : n - 2;
    PenStroke curve{ring ? Mix(control[n - 1], control[0], 0.5f) : control[0]};
    for (std::size_t i = first; i <= last; ++i) {
        const SPenPoint from = curve.back();
        const SPenPoint next = control[(i + 1) % n];
        const SPenPoint to = !ring && i == last ? next : Mix(control[i], next, 0.5f);
        for (int k = 1; k <= kPiecesOfACurve; ++k) {
            const float t = static_cast<float>(k) / kPiecesOfACurve;
            curve.push_back(Mix(Mix(from, control[i], t), Mix(control[i], to, t), t));
        }
    }
    return curve;
}

struct SLetter {
    std::vector<PenStroke> strokes;
    float width = 0;  ///< in units
};

SLetter Draw(u32 character, std::string_view strokes) {
    SLetter letter;
    if (character >= '0' && character <= '9') letter.width = kDigitWidth;
    while (!strokes.empty()) {
        std::string_view stroke = strokes.substr(0, strokes.find(' '));
        strokes.remove_prefix(std::min(strokes.size(), stroke.size() + 1));
        const char kind = stroke[0];
        if (kind == '~' || kind == 'o') stroke.remove_prefix(1);
        PenStroke points;
        for (; stroke.size() >= 2; stroke.remove_prefix(2)) {
            const auto x = static_cast<float>(Hex(stroke[0]));
            points.push_back({x * kUnitX, static_cast<float>(3 - Hex(stroke[1])) * kUnitY});
            letter.width = std::max(letter.width, x);
        }
        letter.strokes.push_back(kind == '~' || kind == 'o' ? Smooth(points, kind == 'o') : points);
    }
    return letter;
}

const SLetter& Letter(u32 character) {
    static const std::map<u32, SLetter> letters = [] {
        std::map<u32, SLetter> all{{0, Draw(0, kUnknown)}};
        for (const SGlyph& glyph : kGlyphs) all.emplace(glyph.character, Draw(glyph.character, glyph.strokes));
        return all;
    }();
    const auto found = letters.find(character);
    return found != letters.end() ? found->second : letters.at(0);
}

}  // namespace

SPenText WriteWithPen(const std::string& text) {
    SPenText written;
    const CString wide(text.c_str(), static_cast<int>(text.size()));
    float x = 0;
    for (int i = 0; i < wide.length(); ++i) {
        const auto character = static_cast<u32>(wide.c_str()[i]);
        if (character == ' ') {
            x += kBlank * kUnitX;
            continue;
        }
        const SLetter& letter = Letter(character);
        for (PenStroke stroke : letter.strokes) {
            for (SPenPoint& point : stroke) point.x += x;
            written.strokes.push_back(std::move(stroke));
        }
        x += letter.width * kUnitX;
        written.width = x;
        x += kGap * kUnitX;
    }
    return written;
}

}  // namespace ovix::app
