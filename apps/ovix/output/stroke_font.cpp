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
    wchar_t character;
    const char* strokes;
};
constexpr SGlyph kGlyphs[] = {
    {L'!', "0B06 0303"},
    {L'"', "0B09 2B29"},
    {L'#', "131B 434B 0555 0959"},
    {L'$', "~696B0B0767630305 3C32"},
    {L'%', "036B o09292B0B o43636545"},
    {L'&', "~63181B4B4806034366"},
    {L'\'', "0B09"},
    {L'(', "~2B090521"},
    {L')', "~0B292501"},
    {L'*', "2A26 0947 0749"},
    {L'+', "0666 3933"},
    {L',', "1301"},
    {L'-', "0646"},
    {L'.', "0303"},
    {L'/', "014B"},
    {L'0', "o03535B0B"},
    {L'1', "193B33"},
    {L'2', "~090B5B5703 0353"},
    {L'3', "~090B5B5727 ~2757530305"},
    {L'4', "434B0555"},
    {L'5', "5B0B07 ~072858530305"},
    {L'6', "o03535808 ~5A4B0B0605"},
    {L'7', "0B5B23"},
    {L'8', "o07575B0B o03535707"},
    {L'9', "o06565B0B ~5958531304"},
    {L':', "0303 0707"},
    {L';', "1301 1707"},
    {L'<', "490643"},
    {L'=', "0555 0757"},
    {L'>', "094603"},
    {L'?', "~090B5B582725 2323"},
    {L'@', "o25555828 ~5855757B0B0262"},
    {L'A', "033B63 1656"},
    {L'B', "030B ~0B2B5B572707 ~27676323 2303"},
    {L'C', "~696B0B036365"},
    {L'D', "030B ~0B2B6B632303"},
    {L'E', "5B0B0353 0747"},
    {L'F', "5B0B03 0747"},
    {L'G', "~696B0B036367 6737"},
    {L'H', "030B 636B 0767"},
    {L'I', "030B"},
    {L'J', "~4B47430305"},
    {L'K', "030B 5B06 2853"},
    {L'L', "0B0353"},
    {L'M', "030B356B63"},
    {L'N', "030B636B"},
    {L'O', "o03636B0B"},
    {L'P', "030B ~0B3B6B663606"},
    {L'Q', "o03636B0B 3662"},
    {L'R', "030B ~0B3B6B663606 3663"},
    {L'S', "~696B0B0767630305"},
    {L'T', "0B6B 3B33"},
    {L'U', "~0B070363676B"},
    {L'V', "0B336B"},
    {L'W', "0B234A638B"},
    {L'X', "036B 0B63"},
    {L'Y', "0B376B 3733"},
    {L'Z', "0B6B0363"},
    {L'[', "2B0B0121"},
    {L'\\', "0B41"},
    {L']', "0B2B2101"},
    {L'^', "092B49"},
    {L'_', "0262"},
    {L'`', "0B19"},
    {L'a', "o03535808 5853"},
    {L'b', "0B03 o03535808"},
    {L'c', "~575808035354"},
    {L'd', "5B53 o03535808"},
    {L'e', "0656 ~565808035354"},
    {L'f', "~13181B3B 0838"},
    {L'g', "o03535808 ~5854500001"},
    {L'h', "0B03 ~0608585653"},
    {L'i', "0308 0A0A"},
    {L'j', "~18141000 1A1A"},
    {L'k', "0B03 4805 1643"},
    {L'l', "0B03"},
    {L'm', "0803 ~0608484643 ~4648888683"},
    {L'n', "0803 ~0608585653"},
    {L'o', "o03535808"},
    {L'p', "0800 o03535808"},
    {L'q', "5850 o03535808"},
    {L'r', "0803 ~060838"},
    {L's', "~4748080645430304"},
    {L't', "~1A151333 0838"},
    {L'u', "~0805035355 5853"},
    {L'v', "082348"},
    {L'w', "0813375368"},
    {L'x', "0348 0843"},
    {L'y', "0823 4810"},
    {L'z', "08480343"},
    {L'{', "~2B1B1606 ~06161121"},
    {L'|', "010B"},
    {L'}', "~0B1B1626 ~26161101"},
    {L'~', "~050737356567"},
    {L'°', "o08383B0B"},
    {L'±', "0767 3A34 0363"},
    {L'²', "~0A0B3B3907 0737"},
    {L'³', "~0A0B3B3919 ~1939370708"},
    {L'µ', "0800 ~0805035355 5853"},
    {L'·', "0606"},
    {L'×', "0448 0844"},
    {L'Δ', "033B6303"},
    {L'σ', "o03535808 2868"},
    {L'–', "0666"},
    {L'−', "0666"},
    {L'…', "0303 2323 4343"},
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

SLetter Draw(wchar_t character, std::string_view strokes) {
    SLetter letter;
    if (character >= L'0' && character <= L'9') letter.width = kDigitWidth;
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

const SLetter& Letter(wchar_t character) {
    static const std::map<wchar_t, SLetter> letters = [] {
        std::map<wchar_t, SLetter> all{{0, Draw(0, kUnknown)}};
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
        const wchar_t character = wide.c_str()[i];
        if (character == L' ') {
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
