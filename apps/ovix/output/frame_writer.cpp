#include "apps/ovix/output/frame_writer.h"

#include <fmt/format.h>

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/csv_writer.h"
#include "apps/ovix/output/npy_writer.h"
#include "apps/ovix/output/png_writer.h"
#include "apps/ovix/output/tiff_writer.h"

namespace ovix::app {

IFrameWriter::~IFrameWriter() = default;

std::unique_ptr<IFrameWriter> MakeFrameWriter(const std::filesystem::path& target, const SSeries& series,
                                              const SWriteOptions& options) {
    const CString extension(target.extension().c_str());
    if (extension.EqualsNoCase(L".png")) return MakePngWriter(target, series, options);
    if (extension.EqualsNoCase(L".npy")) return MakeNpyWriter(target, series, options.overwrite);
    if (extension.EqualsNoCase(L".csv")) return MakeCsvWriter(target, series, options.overwrite);
    if (extension.EqualsNoCase(L".tif") || extension.EqualsNoCase(L".tiff")) {
        return MakeTiffWriter(target, series, options.overwrite);
    }
    throw CAppError(ExitUsage, fmt::format("{}: an output ends in .png, .tif, .npy or .csv, not in \"{}\"",
                                           target.string(), target.extension().string()));
}

}  // namespace ovix::app
