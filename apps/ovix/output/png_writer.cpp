#include <fmt/format.h>
#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/output/picture_range.h"
#include "apps/ovix/output/plain_picture.h"
#include "apps/ovix/output/png_file.h"
#include "apps/ovix/output/thermal_picture.h"
#include "apps/ovix/status_flags.h"

namespace ovix::app {
namespace {

class CPngWriter final : public IFrameWriter {
  public:
    CPngWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(target), series_(series), options_(options) {
        if (series.frames <= 1) file_ = std::make_unique<COutputFile>(target, options.overwrite);
    }

    SEncodedFrame Encode(const SPicture& picture) const override {
        SEncodedFrame encoded;
        encoded.values.push_back(options_.plain ? Plain(picture) : Drawn(picture));
        return encoded;
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        if (series_.frames > 1) file_ = std::make_unique<COutputFile>(PathOfFrame(picture.frame), options_.overwrite);
        for (const auto& piece : encoded.values) file_->Write(piece.data(), piece.size());
        if (series_.frames > 1) file_->Commit();
        empty_ = false;
    }
    void Finish() override {
        if (empty_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        if (series_.frames <= 1) file_->Commit();
    }

  private:
    Json Description(const SPicture& picture) const {
        Json description = DescribeSeries(series_, {});
        description.update(DescribeFrame(picture));
        return description;
    }

    std::vector<u8> Drawn(const SPicture& picture) const {
        Json description = Description(picture);
        SRange range;
        if (picture.colours.empty()) {
            range = RangeFor(picture);
            description["range"] = {range.low, range.high};
            description["palette"] = options_.palette->name;
        }
        const SThermalPicture drawn = DrawThermalPicture(series_, picture, {range, options_});
        return PngOf(RowsOf(drawn.canvas), JsonText(description, -1, true), options_.compression);
    }

    std::vector<u8> Plain(const SPicture& picture) const {
        Json description = Description(picture);
        if (!picture.colours.empty())
            return PngOf(RowsOf(DrawPixels(picture.colours, series_.width, series_.height)),
                         JsonText(description, -1, true), options_.compression);
        const SRange ends = options_.range
                                ? SRange{options_.range->first, options_.range->second}
                                : Extremes(picture.values, picture.status, kStatusNoData).value_or(SRange{0, 1});
        const CPlainScale scale(ends, series_.unit);
        description.update(scale.Describe());
        u64 beyond = 0;
        const SPngRows rows = scale.Rows(picture, series_.width, beyond);
        description["beyond"] = beyond;
        return PngOf(rows, JsonText(description, -1, true), options_.compression);
    }

    SRange RangeFor(const SPicture& picture) const {
        if (options_.range) return RangeBetween(options_.range->first, options_.range->second);
        if (series_.frames > 1) throw UsageFault(target_.string() + ": pictures of several frames need one range");
        CCommonRange range;
        range.Add(SuitingRange(picture.values, picture.status, series_.width, options_.percentiles));
        return range.Range();
    }
    std::filesystem::path PathOfFrame(u64 frame) const {
        return target_.parent_path() /
               fmt::format("{}-{:06}{}", target_.stem().string(), frame, target_.extension().string());
    }

    std::filesystem::path target_;
    SSeries series_;
    SWriteOptions options_;
    std::unique_ptr<COutputFile> file_;
    bool empty_ = true;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakePngWriter(const std::filesystem::path& target, const SSeries& series,
                                            const SWriteOptions& options) {
    return std::make_unique<CPngWriter>(target, series, options);
}

}  // namespace ovix::app
