#include "apps/ovix/output/frame_writer.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <libdeflate.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/status_flags.h"
#include "measure/measure.h"

namespace ovix::app {
namespace {

/// Adds a block to a histogram. Nearly all blocks hold one byte all through, as the compiler's vectors see at once.
void AddToHistogram(std::span<const u8> block, u64 (&ofByte)[256]) {
    u8 differs = 0;
    for (const u8 byte : block) differs |= static_cast<u8>(byte ^ block[0]);
    if (differs == 0) {
        ofByte[block[0]] += block.size();
    } else {
        for (const u8 byte : block) ++ofByte[byte];
    }
}

/// From a library of the tool's own beside `ovix.measure.so`: HDF5 brings some thirty others, and each start would wait
/// for them.
std::unique_ptr<IFrameWriter> MakeNexusWriter(const std::filesystem::path& target, const SSeries& series,
                                              const SWriteOptions& options) {
    using Make = IFrameWriter*(const std::filesystem::path&, const SSeries&, const SWriteOptions&);
    Dl_info beside{};
    if (!::dladdr(reinterpret_cast<void*>(&measure::CheckRecording), &beside)) beside.dli_fname = "";
    const auto path = std::filesystem::path(beside.dli_fname).replace_filename("ovix.nexus.so");
    void* library = ::dlopen(path.c_str(), RTLD_NOW);
    void* make = library ? ::dlsym(library, "OvixMakeNexusWriter") : nullptr;
    if (!make) throw CAppError(ExitFile, fmt::format("cannot write {}: {}", target.string(), ::dlerror()));
    return std::unique_ptr<IFrameWriter>(reinterpret_cast<Make*>(make)(target, series, options));
}

}  // namespace

IFrameWriter::~IFrameWriter() = default;

std::unique_ptr<IFrameWriter> MakeFrameWriter(const std::filesystem::path& target, const SSeries& series,
                                              const SWriteOptions& options) {
    const std::string ending = target == "-" ? options.format : target.extension().string();
    const CString extension(ending.c_str());
    if (extension.EqualsNoCase(L".png")) return MakePngWriter(target, series, options);
    if (extension.EqualsNoCase(L".npy")) return MakeNpyWriter(target, series, options);
    if (extension.EqualsNoCase(L".csv")) return MakeCsvWriter(target, series, options);
    if (extension.EqualsNoCase(L".tif") || extension.EqualsNoCase(L".tiff")) {
        return MakeTiffWriter(target, series, options);
    }
    if (extension.EqualsNoCase(L".zarr")) return MakeZarrWriter(target, series, options);
    if (extension.EqualsNoCase(L".nxs")) return MakeNexusWriter(target, series, options);
    throw CAppError(ExitUsage, fmt::format("{}: an output ends in .png, .tif, .npy, .csv, .zarr or .nxs, not in \"{}\"",
                                           target.string(), ending));
}

std::vector<u8> Deflated(std::span<const u8> bytes, int level) {
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!compressor) throw std::bad_alloc();
    std::vector<u8> packed(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()));
    packed.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), packed.data(), packed.size()));
    return packed;
}

std::vector<u16> StepsOf(const SPicture& picture, const SSteps& steps) {
    constexpr double kMost = 65535;
    std::vector<u16> numbers;
    numbers.reserve(picture.values.size());
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        const double value = picture.values[i];
        const bool nothing = std::isnan(value) || (!picture.status.empty() && picture.status[i] & kStatusNoData);
        const double number = nothing && steps.noData ? 0 : std::round((value - steps.offset) / steps.step);
        if (!(number >= (steps.noData && !nothing ? 1 : 0) && number <= kMost))
            throw CFault(
                {.frame = picture.frame,
                 .expected = fmt::format("values that 16 bits hold in steps of {} from {}", steps.step, steps.offset),
                 .found = fmt::format("{}", picture.values[i]),
                 .advice = "a larger --step or --type float32 holds it"});
        numbers.push_back(static_cast<u16>(number));
    }
    return numbers;
}

std::vector<float> MaskedOf(const SPicture& picture) {
    std::vector<float> values(picture.values.begin(), picture.values.end());
    for (std::size_t i = 0; i < picture.status.size(); ++i) {
        if (picture.status[i] & kStatusNoData) values[i] = std::numeric_limits<float>::quiet_NaN();
    }
    return values;
}

Json DescribeSeries(const SSeries& series, const SWriteOptions& options) {
    Json json{{"schema", kSchemaVersion},        {"title", series.title},        {"quantity", series.unit.quantity},
              {"unit", series.unit.symbol},      {"width", series.width},        {"height", series.height},
              {"parameters", series.parameters}, {"statusFlags", StatusLegend()}};
    if (options.mask) json["_FillValue"] = "NaN";
    if (!options.steps) return json;
    json.update({{"scale_factor", options.steps->step}, {"add_offset", options.steps->offset}});
    if (options.steps->noData) json["_FillValue"] = 0;
    return json;
}

Json DescribeFrame(const SPicture& picture) {
    Json frame{{"frame", picture.frame}};
    if (picture.time) frame["time"] = TimeText(*picture.time);
    if (!picture.caption.empty()) frame["caption"] = picture.caption;
    if (!picture.status.empty()) frame["status"] = CountStatus(picture.status);
    return frame;
}

Json CountStatus(std::span<const u8> status) {
    constexpr std::size_t kBlock = 128;
    u64 ofByte[256] = {};
    for (std::size_t i = 0; i < status.size(); i += kBlock)
        AddToHistogram(status.subspan(i, std::min(kBlock, status.size() - i)), ofByte);
    Json counts{{"good", ofByte[0]}};
    for (const SStatusFlag& flag : kStatusFlags) {
        u64 pixels = 0;
        for (unsigned byte = flag.bit; byte < 2U * flag.bit; ++byte) pixels += ofByte[byte];
        if (pixels > 0) counts[flag.key] = pixels;
    }
    return counts;
}

}  // namespace ovix::app
