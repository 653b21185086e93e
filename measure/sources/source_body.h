#pragma once

#include <atomic>
#include <functional>

#include "measure/sources/input_file.h"
#include "measure/sources/source.h"

namespace ovix::measure {

class CSumCheck;

/// What copies of a source share. Everything but the findings is settled when it is made; all members but `Next` may be
/// called by any number of threads at once.
class CSource::IBody {
  public:
    IBody(std::shared_ptr<const CInputFile> file, ESource kind, SFrameFormat format);
    IBody(const IBody&) = delete;
    IBody& operator=(const IBody&) = delete;
    virtual ~IBody();

    const CInputFile& File() const { return *file_; }
    ESource Kind() const { return kind_; }
    const SFrameFormat& Format() const { return format_; }

    virtual bool IsNumbered() const = 0;
    /// Whether frames are unpacked when they are read, and so have no place in the file.
    virtual bool IsPacked() const { return false; }
    virtual std::optional<u64> Count() const = 0;
    virtual u64 FrameSize() const = 0;
    virtual void Read(u64 number, SRawFrame& frame) const = 0;
    virtual SExtent Find(u64 number) const = 0;
    virtual bool Next(SRawFrame& frame, const std::stop_token& stop) = 0;

    void Describe(reduce::CReduceObjectArray& objects) const;
    void Overrule(reduce::CReduceObjectArray& objects) const;
    u32 OverruledScene() const { return overruled_; }

    std::vector<SFinding> Findings() const;
    void Add(SFinding finding) const;

  protected:
    /// What the source says of its frames, while it is made. A source info is added where there is none.
    void SetObjects(const reduce::CReduceObjectArray& objects);
    /// The scene values that the source tells otherwise than its frames do were given to it when it was made, and hold
    /// for all frames. The first frame that will do decides; `next` reads them one by one, and is
    /// not asked where the source tells no scene.
    void FindOverruled(const std::function<std::optional<std::vector<u8>>()>& next);
    /// Throws `CError` (SumDiffers) for a frame that is not what it was, and adds the finding.
    void HoldAgainstSum(const CSumCheck& sums, const SRawFrame& frame) const;

  private:
    std::shared_ptr<const CInputFile> file_;
    ESource kind_;
    SFrameFormat format_;
    /// Lookups are not const, but change nothing.
    mutable reduce::CReduceObjectArray objects_;
    u32 overruled_ = 0;
    /// Chained from the last one back, and only ever added to: without a lock, which a forked child might find held.
    struct SFound {
        SFinding finding;
        const SFound* before;
    };
    mutable std::atomic<const SFound*> findings_ = nullptr;
};

/// Counts for plain 16-bit pixels, else Dump.
ESource KindOf(const SFrameFormat& format);
/// Whether the frames are counts with the high byte first, which are handed out with the low byte first.
bool IsBigEndian(const SFrameFormat& format);
void SwapBytes(std::span<u8> counts);

}  // namespace ovix::measure
