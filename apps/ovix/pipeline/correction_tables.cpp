#include "apps/ovix/pipeline/correction_tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

/// The tables whose files stand under the stem, as the library finds them: bits of `ECorrectionTables`.
u8 TablesOnDisk(const std::string& stem) {
    constexpr std::pair<const char*, u8> kFiles[] = {
        {".mvg", reduce::CorrectionGain}, {".mvo", reduce::CorrectionOffset}, {".mvb", reduce::CorrectionBadPixels}};
    const CString given(std::filesystem::path(stem).extension().c_str());
    const bool namesOne = std::any_of(std::begin(kFiles), std::end(kFiles),
                                      [&](const auto& file) { return given.EqualsNoCase(CString(file.first)); });
    const std::string base = namesOne ? std::filesystem::path(stem).replace_extension().string() : stem;
    u8 tables = 0;
    for (const auto& [extension, table] : kFiles) {
        std::error_code ignored;
        if (std::filesystem::exists(base + extension, ignored)) tables = static_cast<u8>(tables | table);
    }
    return tables;
}

void RequireSize(const reduce::CCorrectionReduceObject& tables, const SFrameFormat& format, const std::string& whose) {
    if (tables.width == format.width && tables.height == format.height) return;
    throw CFault({.file = whose,
                  .expected = fmt::format("tables of {} x {}", format.width, format.height),
                  .found = fmt::format("{} x {}", tables.width, tables.height)});
}

}  // namespace

void LoadCorrectionTables(reduce::CReduceObjectArray& objects, const SCorrectionFiles& files,
                          const SFrameFormat& format) {
    if (PixelFormOf(format).unit != Counts) throw UsageFault("--correction: the source holds colours, not counts");
    const u8 present = TablesOnDisk(files.stem);
    if (!present)
        throw CFault(
            {.exit = ExitFile, .file = files.stem, .problem = "there is no .mvg, .mvo or .mvb file of that stem"});
    const auto tables = objects.Get<reduce::CCorrectionReduceObject>(files.preset ? *files.preset : -1, true);
    // The library passes over a file that it cannot read. Here, one that is there is meant.
    const bool loaded = tables->Load(FileSystem, CString(files.stem.c_str()));
    if (!loaded || (tables->present & present) != present)
        throw CFault({.file = files.stem,
                      .expected = "correction tables of one size, each of the kind of its extension",
                      .found = "a damaged file, another kind or another size"});
    RequireSize(*tables, format, files.stem);
}

bool HasCorrection(reduce::CReduceObjectArray& objects, const SFrameFormat& format) {
    bool found = false;
    for (u32 i = 0; i < objects.GetSize(); ++i) {
        const auto tables = objects.GetAt(i).Cast<reduce::CCorrectionReduceObject>();
        if (!tables) continue;
        found = true;
        if (tables->present) RequireSize(*tables, format, "the recorded correction");
    }
    return found;
}

}  // namespace ovix::app
