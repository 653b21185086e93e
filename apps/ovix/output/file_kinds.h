#pragma once

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

// What the writers of the single kinds of files share.

using MakeWriter = std::unique_ptr<IFrameWriter>(const std::filesystem::path& target, const SSeries& series,
                                                 const SWriteOptions& options);
MakeWriter MakeCsvWriter, MakeNexusWriter, MakeNpyWriter, MakePngWriter, MakeTiffWriter, MakeZarrWriter;

/// Bytes as a zlib stream, by a level from 0 to 12.
std::vector<u8> Deflated(std::span<const u8> bytes, int level);

/// `out.npy` gives `out.status.npy`.
inline std::filesystem::path StatusPath(std::filesystem::path target) {
    const auto extension = target.extension();
    return target.replace_extension(".status" + extension.string());
}

/// Writes the values to one file and the status bytes, if the frames have any, to a second of the same kind.
///
/// A `TFile<T>` holds planes of T, and is made of the target, the series and the options. `TFile<T>::Encode(series,
/// options, picture, plane)` makes the pieces that `Append(plane, pieces, description)` writes; `Complete` writes what
/// is known only at the end, `Commit` puts the file into its place.
template <template <class> class TFile>
class TDataWriter : public IFrameWriter {
  public:
    TDataWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(target), series_(series), options_(options), values_(target, series, options) {}

    SEncodedFrame Encode(const SPicture& picture) const override {
        SEncodedFrame encoded;
        encoded.values = TFile<float>::Encode(series_, options_, picture.frame, picture.values);
        if (!picture.status.empty())
            encoded.status = TFile<u8>::Encode(series_, options_, picture.frame, picture.status);
        if (TFile<float>::kDescribesFrames) encoded.description = DescribeFrame(picture);
        return encoded;
    }

    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        if (!picture.status.empty()) {
            if (!status_) {
                SSeries flags = series_;
                flags.unit = {"Status", "flags", "flags"};
                status_ = std::make_unique<TFile<u8>>(StatusPath(target_), flags, options_);
            }
            status_->Append(picture.status, encoded.status, encoded.description);
        }
        values_.Append(picture.values, encoded.values, encoded.description);
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
    SWriteOptions options_;
    bool empty_ = true;
    TFile<float> values_;
    std::unique_ptr<TFile<u8>> status_;
};

}  // namespace ovix::app
