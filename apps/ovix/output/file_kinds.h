#pragma once

#include "apps/ovix/app_error.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

// What the writers of the single kinds of files share.

using MakeWriter = std::unique_ptr<IFrameWriter>(const std::filesystem::path& target, const SSeries& series,
                                                 const SWriteOptions& options);
MakeWriter MakeCsvWriter, MakeNpyWriter, MakePngWriter, MakeTiffWriter, MakeZarrWriter;

/// Bytes as a zlib stream, by a level from 0 to 12.
std::vector<u8> Deflated(std::span<const u8> bytes, int level);

/// The values as whole numbers. Throws `CFault` for one that 16 bits do not hold.
std::vector<u16> StepsOf(const SPicture& picture, const SSteps& steps);
/// The values, NaN where there is no data.
std::vector<float> MaskedOf(const SPicture& picture);

/// `out.npy` gives `out.status.npy`.
inline std::filesystem::path StatusPath(std::filesystem::path target) {
    const auto extension = target.extension();
    return target.replace_extension(".status" + extension.string());
}

/// Writes the values to one file and the status bytes, if the frames have any, to a second of the same kind.
///
/// A `TFile<T>` holds planes of T, and is made of the target, the series and the options. `TFile<T>::Encode(series,
/// options, picture, plane)` makes the pieces that `Append(plane, pieces, description)` writes; `Complete` writes what
/// is known only at the end, `Commit` puts the file into its place. `Value` is float, or u16 for values as steps.
template <template <class> class TFile, class Value = float>
class TDataWriter : public IFrameWriter {
  public:
    TDataWriter(const std::filesystem::path& target, const SSeries& series, const SWriteOptions& options)
        : target_(target), series_(series), options_(options), values_(target, series, options) {
        options_.status = options_.status && target != "-";
    }

    SEncodedFrame Encode(const SPicture& picture) const override {
        SEncodedFrame encoded;
        if constexpr (kSteps) encoded.steps = StepsOf(picture, *options_.steps);
        if (!kSteps && options_.mask) encoded.masked = MaskedOf(picture);
        encoded.values = TFile<Value>::Encode(series_, options_, picture.frame, PlaneOf(picture, encoded));
        if (!picture.status.empty() && options_.status)
            encoded.status = TFile<u8>::Encode(series_, options_, picture.frame, picture.status);
        if (TFile<Value>::kDescribesFrames) encoded.description = DescribeFrame(picture);
        return encoded;
    }

    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        if (!picture.status.empty() && options_.status) {
            if (!status_) {
                SSeries flags = series_;
                flags.unit = {"Status", "flags", "flags"};
                SWriteOptions plain = options_;
                plain.steps.reset();
                plain.mask = false;
                status_ = std::make_unique<TFile<u8>>(StatusPath(target_), flags, plain);
            }
            status_->Append(picture.status, encoded.status, encoded.description);
        }
        values_.Append(PlaneOf(picture, encoded), encoded.values, encoded.description);
        empty_ = false;
    }

    /// The values come last: who sees them finds the rest there.
    void Finish() override {
        Complete();
        Commit();
    }

  protected:
    void Complete() {
        if (empty_) throw CAppError(ExitBadData, target_.string() + ": no frame to write");
        if (status_) status_->Complete();
        values_.Complete();
    }
    void Commit() {
        if (status_) status_->Commit();
        values_.Commit();
    }

  private:
    static constexpr bool kSteps = std::is_same_v<Value, u16>;
    std::span<const Value> PlaneOf(const SPicture& picture, const SEncodedFrame& encoded) const {
        if constexpr (kSteps)
            return encoded.steps;
        else
            return options_.mask ? std::span<const float>(encoded.masked) : picture.values;
    }

    std::filesystem::path target_;
    SSeries series_;
    SWriteOptions options_;
    bool empty_ = true;
    TFile<Value> values_;
    std::unique_ptr<TFile<u8>> status_;
};

}  // namespace ovix::app
