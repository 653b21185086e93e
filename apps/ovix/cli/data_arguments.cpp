#include "apps/ovix/cli/data_arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {
namespace {

struct SEffect {
    const char* option;
    const char* kinds;  ///< where it has one
};
constexpr SEffect kEffects[] = {
    {"--type", ".tif, .npy"},
    {"--step", ".tif, .npy, .zarr"},
    {"--by-trace", ".zarr"},
    {"--no-status", ".tif, .npy, .csv"},
    {"--mask", ".tif, .npy, .csv"},
    {"--squeeze", ".npy"},
    {"--compression", ".tif, .png, .zarr, .nxs"},
    {"--level", ".tif, .png, .zarr, .nxs"},
};

struct SMethod {
    const char* kind;
    const char* name;
    int most;  ///< level
};

/// The first of a kind is what it has where nothing is said.
constexpr SMethod kMethods[] = {{".tif", "deflate", 12},
                                {".tif", "zstd", 19},
                                {".png", "deflate", 12},
                                {".zarr", "zstd", 9},
                                {".nxs", "deflate", 9}};

std::string KindOf(std::string extension) {
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension == ".tiff" ? ".tif" : extension;
}

}  // namespace

void CDataArguments::Add(CLI::App& verb) {
    const char* group = "Files of numbers";
    const auto add = [&](CLI::Option* option, const char* type = nullptr) {
        option->group(group);
        if (type) option->type_name(type);
        given_.push_back(option);
        return option;
    };
    add(verb.add_option("--type", type_, "of .tif and .npy: what a value is (else float32)"), "float32|uint16");
    add(verb.add_option("--step", step_,
                        "of uint16, and of .zarr: values as whole multiples of this, in their unit (else 0.01 of "
                        "temperatures and 1 of counts; of .zarr floats)"),
        "STEP")
        ->check([](const std::string& text) {
            const auto step = ParseNumber<double>(text);
            return step && *step > 0 && std::isfinite(*step) ? "" : "expected a number above 0, found \"" + text + '"';
        });
    add(verb.add_flag("--by-trace", byTrace_,
                      "of .zarr: chunks of 64 frames and 64 x 64 pixels, for who reads pixels over time"));
    add(verb.add_flag("--no-status", noStatus_, "of .tif, .npy and .csv: no file of status bytes beside"));
    add(verb.add_flag("--mask", mask_, "of .tif, .npy and .csv: NaN for pixels without data"));
    add(verb.add_flag("--squeeze", squeeze_, "of .npy: one frame alone has two dimensions, not three"));
    add(verb.add_option("--compression", compression_,
                        "deflate of .tif, .png and .nxs, zstd of .zarr and .tif, or none (else the first)"),
        "none|deflate|zstd");
    add(verb.add_option("--level", level_,
                        "of the compression: from 1, quick (the default), to 12 of deflate, 19 of zstd, 9 in .zarr and "
                        ".nxs, small"),
        "N");
}

void CDataArguments::RefuseIdle(const std::string& kind) const {
    for (const CLI::Option* option : given_) {
        if (!option->count()) continue;
        for (const SEffect& effect : kEffects) {
            if (option->get_name() == effect.option && std::string_view(effect.kinds).find(kind) == std::string::npos)
                throw UsageFault(fmt::format("{}: has an effect on {} alone", effect.option, effect.kinds));
        }
    }
    const bool whole = AsWholeNumbers();
    if (step_ > 0 && kind != ".zarr" && !whole) throw UsageFault("--step: goes with --type uint16");
    if (mask_ && whole) throw UsageFault("--mask: has no effect on --type uint16, whose 0 is no data");
}

bool CDataArguments::AsWholeNumbers() const {
    return !type_.empty() && ParseChoice<bool>("--type", type_, {{"float32", false}, {"uint16", true}});
}

void CDataArguments::PutCompression(SWriteOptions& options, const std::string& kind) const {
    std::vector<std::pair<std::string, const SMethod*>> words;
    for (const SMethod& method : kMethods) {
        if (method.kind == kind) words.emplace_back(method.name, &method);
    }
    if (words.empty()) return;
    const SMethod* method = words.front().second;
    words.emplace_back("none", nullptr);
    if (!compression_.empty()) method = ParseChoice<const SMethod*>("--compression", compression_, words);
    options.compression = method ? level_ : 0;
    options.zstd = method && std::string_view(method->name) == "zstd";
    const bool hasLevel = given_.back()->count() > 0;
    if (!method && hasLevel) throw UsageFault("--level: has no effect on --compression none");
    if (method && (level_ < 1 || level_ > method->most))
        throw UsageFault(fmt::format("--level: expected 1 to {} of {}, found {}", method->most, kind, level_));
}

void CDataArguments::Put(SWriteOptions& options, const std::string& extension) const {
    const std::string kind = KindOf(extension);
    RefuseIdle(kind);
    PutCompression(options, kind);
    options.step = kind == ".zarr" ? step_ : 0;
    options.byTrace = byTrace_;
    options.status = !noStatus_;
    options.mask = mask_;
    options.squeeze = squeeze_;
}

std::optional<SSteps> CDataArguments::Steps(EUnit unit, ETempType scale) const {
    if (!AsWholeNumbers()) return {};
    if (IsTemperature(unit)) return SSteps{step_ > 0 ? step_ : 0.01, CMath::ConvertTemperature(0, Kelvin, scale), true};
    const bool radiance = unit == RadianceFactory || unit == RadianceUser;
    if (radiance && step_ == 0) throw UsageFault("--type uint16: --step says how fine radiances are");
    return SSteps{step_ > 0 ? step_ : 1, 0, false};
}

}  // namespace ovix::app
