#pragma once

#include <memory>
#include <optional>

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

/// Reads the metadata of single frames, without their pixels. Immutable and shared by threads.
class OVIX_MEASURE_API CFrameReader {
  public:
    explicit CFrameReader(CSource source);

    /// The frame's metadata goes to `objects`, which first become what the source says. Some families repair a frame
    /// where it stands, so its bytes may change. Throws `CError` with file and frame for one that would not do.
    SFrameFacts Read(SRawFrame& raw, reduce::CReduceObjectArray& objects) const;
    /// What the source alone says.
    void Describe(reduce::CReduceObjectArray& objects) const { source_.Describe(objects); }

  private:
    struct SBody;
    CSource source_;
    std::shared_ptr<const SBody> body_;
};

}  // namespace ovix::measure
