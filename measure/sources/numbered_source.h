#pragma once

#include "measure/recordings/frame_sums.h"
#include "measure/recordings/stored_metadata.h"
#include "measure/sources/array_file.h"
#include "measure/sources/frame_layout.h"
#include "measure/sources/source_body.h"

namespace ovix::measure {

/// Frames of a regular file, which are read by their numbers in any order.
class CNumberedSource final : public CSource::IBody {
  public:
    /// Throws `CError` for a recording whose blocks cannot be followed to its frames, that has none, that no decoder
    /// takes, or that says two things of its geometry.
    static std::shared_ptr<CNumberedSource> OfRecording(std::shared_ptr<const CInputFile> file,
                                                        const SOpenOptions& options);
    /// Throws `CError` for a file that holds not one frame of the format.
    static std::shared_ptr<CNumberedSource> OfDump(std::shared_ptr<const CInputFile> file, SFrameFormat format,
                                                   const SOpenOptions& options);

    /// Counts in a file of another kind. Throws `CError` for one without a whole frame.
    static std::shared_ptr<CNumberedSource> OfArray(std::shared_ptr<const CInputFile> file, SArrayFile array);

    CNumberedSource(std::shared_ptr<const CInputFile> file, ESource kind, SFrameFormat format);

    bool IsNumbered() const override { return true; }
    bool IsPacked() const override { return packed_ != nullptr; }
    std::optional<u64> Count() const override { return layout_->Count(); }
    u64 FrameSize() const override { return layout_->FrameSize(); }
    void Read(u64 number, SRawFrame& frame) const override;
    SExtent Find(u64 number) const override;
    bool Next(SRawFrame& frame, const std::stop_token& stop) override;

  private:
    void LookAtRecording(const CRecordingFile& file, const SOpenOptions& options);
    SExtent PlaceOf(u64 number) const;
    void ReadFromFile(const SExtent& place, SRawFrame& frame) const;

    std::unique_ptr<IFrameLayout> layout_;
    std::unique_ptr<IPackedFrames> packed_;
    std::optional<CSumCheck> sums_;
};

}  // namespace ovix::measure
