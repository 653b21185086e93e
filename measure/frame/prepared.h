#pragma once

#include <memory>
#include <vector>

#include "measure/frame/frame_objects.h"
#include "measure/per_process.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// A conversion made ready for frames of one calibration, one scene and one set of presets, with its tables filled:
/// from then on nobody changes it, and any number of threads converts with it.
class CPrepared {
  public:
    /// Throws `CError` (NoCalibration) when the objects cannot serve the unit for these presets.
    CPrepared(const reduce::CReduceObjectArray& objects, EUnit unit, ETempType scale, const Presets& presets,
              std::vector<u8> key);

    /// The bytes of what it was made for; empty for one that serves no other frame.
    const std::vector<u8>& Key() const { return key_; }
    /// The scene as the conversion left it, with the transmission that it used; null where there is none.
    TSharedPtr<reduce::CObjectParametersReduceObject> Scene() const { return scene_; }
    bool UsesScene() const { return usesScene_; }

    // As of `CConvertContext`, which has no constant members: these change nothing once the tables are filled.
    /// Answers the corrected pixels, or `pixels` where there is nothing to correct; false when the tables do not serve.
    bool Correct(STypedData& pixels, STypedData room, u32 count) const;
    bool Convert(STypedData pixels, STypedData out, u8* status, u32 count) const;
    bool Merge(const STypedData* frames, STypedData merged, u8* presetMap, u32 count) const;
    bool Convert(STypedData merged, const u8* presetMap, STypedData out, u8* status, u32 count) const;

  private:
    void FillTables(const Presets& presets) const;

    reduce::CReduceObjectArray objects_;
    mutable reduce::CConvertContext context_;
    TSharedPtr<reduce::CObjectParametersReduceObject> scene_;
    bool usesScene_ = false;
    std::vector<u8> key_;
};

/// The conversions that were made ready last. Any number of threads.
class CPreparedCache {
  public:
    std::shared_ptr<const CPrepared> Find(const std::vector<u8>& key) const;
    /// Keeps a conversion, or answers the one of the same key that another thread made meanwhile.
    std::shared_ptr<const CPrepared> Keep(std::shared_ptr<const CPrepared> made) const;

  private:
    static constexpr std::size_t kMost = 16;
    using Entries = std::vector<std::shared_ptr<const CPrepared>>;

    TPerProcess<Entries> entries_;  ///< used last, first
};

}  // namespace ovix::measure
