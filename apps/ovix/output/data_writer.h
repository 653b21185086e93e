#pragma once

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// `out.npy` gives `out.status.npy`.
inline std::filesystem::path StatusPath(std::filesystem::path target) {
    const auto extension = target.extension();
    return target.replace_extension(".status" + extension.string());
}

/// Writes the values to one file and the status bytes, if the frames have any, to a second of the same kind.
///
/// A `TFile<T>` holds planes of T. It is made of the target, the series and whether it may replace; `Add` takes a
/// picture and its plane, `Complete` writes what is known only at the end, `Commit` puts the file into its place.
template <template <class> class TFile>
class TDataWriter : public IFrameWriter {
  public:
    TDataWriter(const std::filesystem::path& target, const SSeries& series, bool overwrite)
        : target_(target), series_(series), overwrite_(overwrite), values_(target, series, overwrite) {}

    void Add(const SPicture& picture) override {
        if (!picture.status.empty()) {
            if (!status_) {
                SSeries flags = series_;
                flags.unit = {"Status", "flags", "flags"};
                status_ = std::make_unique<TFile<u8>>(StatusPath(target_), flags, overwrite_);
            }
            status_->Add(picture, picture.status);
        }
        values_.Add(picture, picture.values);
        empty_ = false;
    }

    /// The values come last: who sees them finds the rest there.
    void Finish() override {
        if (empty_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        if (status_) status_->Complete();
        values_.Complete();
        if (status_) status_->Commit();
        values_.Commit();
    }

  private:
    std::filesystem::path target_;
    SSeries series_;
    bool overwrite_;
    bool empty_ = true;
    TFile<float> values_;
    std::unique_ptr<TFile<u8>> status_;
};

}  // namespace ovix::app
