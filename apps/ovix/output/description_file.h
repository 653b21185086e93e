#pragma once

#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {

/// What a file of bare numbers cannot say of itself, in a JSON object beside it: what `DescribeSeries` says, and a list
/// "frames" that grows as they come.
class CDescriptionFile {
  public:
    CDescriptionFile(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : file_(target, options.overwrite) {
        std::string head = JsonText(DescribeSeries(series, options), 2);
        head.erase(head.rfind("\n}"));
        Write(head + ",\n  \"frames\": [");
    }
    void Append(const Json& frame) {
        Write((first_ ? "\n    " : ",\n    ") + JsonText(frame));
        first_ = false;
    }
    void Complete() { Write("\n  ]\n}\n"); }
    void Commit() { file_.Commit(); }

  private:
    void Write(const std::string& text) { file_.Write(text.data(), text.size()); }

    COutputFile file_;
    bool first_ = true;
};

/// A `TDataWriter` with a description beside, but on the standard output.
template <template <class> class TFile, class Value = float>
class TDescribedWriter final : public TDataWriter<TFile, Value> {
    using Data = TDataWriter<TFile, Value>;

  public:
    TDescribedWriter(const std::filesystem::path& target, const std::filesystem::path& description,
                     const SSeries& series, const SWriteOptions& options)
        : Data(target, series, options) {
        if (target != "-") description_.emplace(description, series, options);
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        Data::Append(picture, encoded);
        if (description_) description_->Append(encoded.description);
    }
    /// The values come last: who sees them finds the rest there.
    void Finish() override {
        Data::Complete();
        if (description_) {
            description_->Complete();
            description_->Commit();
        }
        Data::Commit();
    }

  private:
    std::optional<CDescriptionFile> description_;
};

}  // namespace ovix::app
