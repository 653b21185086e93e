#pragma once

#include <memory>
#include <optional>
#include <span>

#include "measure/sources/source.h"
#include "measure/time.h"

namespace ovix::measure {

/// What a frame says of itself beside its metadata objects. A thing that its bytes do not hold is not there, whatever a
/// decoder makes up for it.
struct SFrameFacts {
    u8 preset = 0;  ///< that serves; 0 where the frame names none
    bool namesPreset = false;
    std::optional<Time> time = {};
    bool yearAssumed = false;
    std::optional<u64> counter = {};
};

/// Reads single frames as they were recorded: their metadata, and their pixels before any correction. Immutable and
/// shared by threads.
class OVIX_MEASURE_API CFrameReader {
  public:
    explicit CFrameReader(CSource source);

    /// What the pixels of the source are.
    const reduce::SFrameForm& Form() const;

    /// The frame's metadata goes to `objects`, which first become what the source says. Some families repair a frame
    /// where it stands, so its bytes may change. Throws `CError` with file and frame for one that would not do.
    SFrameFacts Read(SRawFrame& raw, reduce::CReduceObjectArray& objects) const;
    /// The same with the pixels: width times height of `Form().bytesPerPixel` in rows from the top.
    SFrameFacts Read(SRawFrame& raw, reduce::CReduceObjectArray& objects, std::span<u8> pixels) const;
    /// What the source alone says.
    void Describe(reduce::CReduceObjectArray& objects) const { source_.Describe(objects); }

  private:
    SFrameFacts Read(SRawFrame& raw, reduce::CReduceObjectArray& objects, void* pixels) const;

    struct SBody;
    CSource source_;
    std::shared_ptr<const SBody> body_;
};

}  // namespace ovix::measure
