#include "apps/ovix/cli/picture_arguments.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/app_error.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {
namespace {

const SPalette* PaletteOf(const char* option, const std::string& name) {
    std::vector<std::pair<std::string, const SPalette*>> words;
    for (const SPalette& palette : Palettes()) words.emplace_back(palette.name, &palette);
    return ParseChoice<const SPalette*>(option, name, words);
}

/// "p1,p99".
Percentiles ParsePercentiles(const char* option, const std::string& text) {
    const auto parts = SplitText(text, ',');
    const auto share = [](std::string_view part) {
        return part.starts_with('p') ? ParseNumber<double>(part.substr(1)) : std::nullopt;
    };
    const auto low = share(parts.front()), high = share(parts.back());
    if (parts.size() != 2 || !low || !high || !(0 <= *low && *low < *high && *high <= 100))
        throw UsageFault(std::string(option) + ": expected LO,HI or percentiles such as p1,p99, found \"" + text +
                         "\"");
    return {*low, *high};
}

}  // namespace

void CPictureArguments::Add(CLI::App& verb) {
    const auto add = [&](const char* name, auto& value, const char* type, const char* help) {
        CLI::Option* option = verb.add_option(name, value, help)->type_name(type)->group("Pictures");
        given_.push_back(option);
        return option;
    };
    add("--range", range_, "LO,HI",
        "values at the ends of the palette, or percentiles of each frame, p1,p99 (else lowest and highest of all "
        "frames, dead pixels aside; several frames are then read twice)");
    add("--palette", palette_, "NAME", "inferno (the default), magma, viridis, cividis, grey or grey-inverted");
    add("--zoom", zoom_, "N", "N times N pixels of the picture for one of the frame (else what suits its size)");
    add("--isotherm", isotherms_, "VALUE", "draw a line along this value, in the unit of the picture; repeatable")
        ->allow_extra_args(false);
    regions_.Add(verb, "Pictures", "a region to be marked");
    for (const char* name : {"--roi", "--regions"}) given_.push_back(verb.get_option(name));
    given_.push_back(verb.add_flag("--mark-extremes", markExtremes_, "mark the hottest and the coldest good pixel")
                         ->group("Pictures"));
    CLI::Option* plain = verb.add_flag("--plain", plain_,
                                       "the pixels alone, grey in 16 bits, with the scale to the unit in the "
                                       "metadata; of video in its colours")
                             ->group("Pictures");
    for (const char* drawn : {"--palette", "--zoom", "--isotherm", "--roi", "--regions", "--mark-extremes"})
        plain->excludes(drawn);
    given_.push_back(plain);
}

void CPictureArguments::RefuseAll() const {
    for (const CLI::Option* option : given_) {
        if (option->count()) throw UsageFault(option->get_name() + ": has an effect on pictures (.png) alone");
    }
}

void CPictureArguments::RefuseOfVideo() const {
    for (const char* of : {"--range", "--palette", "--isotherm", "--mark-extremes"}) {
        for (const CLI::Option* option : given_) {
            if (option->count() && option->get_name() == of)
                throw UsageFault(std::string(of) +
                                 ": has no effect on video in its colours; --unit average has a palette");
        }
    }
}

void CPictureArguments::PutRange(SWriteOptions& options) const {
    if (range_.empty()) return;
    if (range_.starts_with('p')) {
        if (plain_) throw UsageFault("--range: --plain takes LO,HI alone, so that it loses nothing unsaid");
        options.percentiles = ParsePercentiles("--range", range_);
    } else {
        options.range = ParseRange("--range", range_);
    }
}

void CPictureArguments::Put(SWriteOptions& options, u16 width, u16 height) const {
    constexpr int kGreatestZoom = 64;
    PutRange(options);
    if (!palette_.empty()) options.palette = PaletteOf("--palette", palette_);
    if (!zoom_.empty()) {
        options.zoom = ParseNumber<int>(zoom_).value_or(0);
        if (options.zoom < 1 || options.zoom > kGreatestZoom)
            throw UsageFault("--zoom: expected a whole number from 1 to 64, found \"" + zoom_ + "\"");
    }
    for (const std::string& text : isotherms_) {
        const auto level = ParseNumber<float>(text);
        if (!level || !std::isfinite(*level))
            throw UsageFault("--isotherm: expected a number in the picture's unit, found \"" + text + "\"");
        options.isotherms.push_back(*level);
    }
    options.marks = regions_.Given(width, height);
    options.markExtremes = markExtremes_;
    options.plain = plain_;
}

}  // namespace ovix::app
