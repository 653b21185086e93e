#include "apps/ovix/output/csv_writer.h"

#include <fmt/format.h>

#include <charconv>

#include "apps/ovix/output/data_writer.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {
namespace {

template <class T>
class TCsvFile {
  public:
    TCsvFile(const std::filesystem::path& target, const SSeries& series, bool overwrite)
        : file_(target, overwrite), width_(series.width), height_(series.height) {
        text_ = "frame,row";
        for (unsigned x = 0; x < width_; ++x) text_ += fmt::format(",x{} [{}]", x, series.unit.symbol);
        EndLine();
    }

    void Add(const SPicture& picture, std::span<const T> plane) {
        for (unsigned y = 0; y < height_; ++y) {
            Append(picture.frame);
            text_ += ',';
            Append(y);
            for (T value : plane.subspan(std::size_t{y} * width_, width_)) {
                text_ += ',';
                Append(value);
            }
            EndLine();
        }
    }
    void Complete() {}
    void Commit() { file_.Commit(); }

  private:
    template <class Value>
    void Append(Value value) {
        char digits[32];
        text_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    }
    void EndLine() {
        text_ += '\n';
        file_.Write(text_.data(), text_.size());
        text_.clear();
    }

    COutputFile file_;
    unsigned width_;
    unsigned height_;
    std::string text_;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeCsvWriter(const std::filesystem::path& target, const SSeries& series,
                                            bool overwrite) {
    return std::make_unique<TDataWriter<TCsvFile>>(target, series, overwrite);
}

}  // namespace ovix::app
