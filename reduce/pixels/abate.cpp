#include "reduce/pixels/abate.h"

#include "reduce/pixels/nuc_kernel.h"
#include "reduce/pixels/simd/merge_simd.h"

namespace ovix::reduce {

namespace {

constexpr u32 kBlock = 2048;
static_assert(kBlock <= simd::kMovedBlock);
/// What a further preset is corrected for where any of it is pending.
constexpr u32 kPiece = 128;

/// The correction of counts, which rounds. That of floats is the one of `ApplyNUC`.
class CMergeCorrector {
  public:
    CMergeCorrector(bool clip, double minimum, double maximum)
        : clip_(clip), limits_{static_cast<float>(minimum), static_cast<float>(maximum)} {}

    void operator()(const void* x, const float* gain, const i16* offset, void* dest, std::size_t count) const {
        simd::CorrectForMerge(static_cast<const u16*>(x), gain, offset, static_cast<u16*>(dest), count,
                              clip_ ? &limits_ : nullptr);
    }

  private:
    bool clip_;
    TLimits<float> limits_;
};

/// The presets to try, in the order in which they are tried.
struct SWalk {
    u8 presets[8];
    u32 count = 0;
    bool fromLast;

    SWalk(const bool* valid, const u8* order, EAbateMode mode) : fromLast(mode != AbateFromFirst) {
        for (u32 i = 0; i < 8; ++i) {
            if (order[i] < 8 && valid[order[i]]) presets[count++] = order[i];
        }
        if (fromLast) std::reverse(presets, presets + count);
    }
};

struct SCall {
    void* const* sources;
    u32 count;
    void* destination;
    u8* status;
    const u16* thresholds;
    SPresetTables tables;
    bool clip;
};

template <class T, class Correct>
class TMerge {
  public:
    TMerge(const SCall& call, const SWalk& walk, const Correct& correct) : call_(call), walk_(walk), correct_(correct) {
        for (u32 i = 0; i < walk.count; ++i) {
            inPlace_ |= call.sources[walk.presets[i]] == call.destination;
            mapped_ |= call.tables.Of(walk.presets[i]).replace != nullptr;
        }
    }

    void operator()() const {
        // A map may lead to a pixel that was merged already, when the destination is one of the sources.
        const u32 block = inPlace_ && mapped_ ? 1 : kBlock;
        for (u32 at = 0, n; at < call_.count; at += n) {
            n = std::min(block, call_.count - at);
            Block(at, n);
        }
    }

  private:
    void Block(u32 first, u32 count) const {
        T room[kBlock];
        u8 statusRoom[kBlock];
        T* destination = static_cast<T*>(call_.destination) + first;
        T* values = inPlace_ ? room : destination;
        u8* status = call_.status ? call_.status + first : statusRoom;
        bool pending = Take(0, first, count, values, status);
        for (u32 i = 1; i < walk_.count && pending; ++i) {
            pending = TakeWherePending(i, first, count, values, status);
        }
        if (inPlace_) std::memcpy(destination, room, count * sizeof(T));
    }

    /// Only the pieces in which a pixel is pending are corrected, neighbours together.
    bool TakeWherePending(u32 step, u32 first, u32 count, T* values, u8* status) const {
        bool pending = false;
        for (u32 at = 0, end = 0; at < count; at = end + kPiece) {
            end = at;
            while (end < count && simd::AnyPending(status + end, std::min(kPiece, count - end))) end += kPiece;
            const u32 n = std::min(end, count) - at;
            if (n) pending |= Take(step, first + at, n, values + at, status + at);
        }
        return pending;
    }

    /// The pending pixels of a stretch take the preset at a step of the walk. Answers whether any is pending still.
    bool Take(u32 step, u32 first, u32 count, T* values, u8* status) const {
        const u8 preset = walk_.presets[step];
        T corrected[kBlock];
        return simd::TakePending(Corrected(preset, first, count, corrected),
                                 {preset, step == 0, step + 1 == walk_.count, walk_.fromLast, call_.thresholds[preset]},
                                 values, status, count);
    }

    /// The corrected pixels of a preset: in `room`, or in place where there is nothing to correct.
    const T* Corrected(u8 preset, u32 first, u32 count, T* room) const {
        const T* source = static_cast<const T*>(call_.sources[preset]);
        const SCorrectionTables tables = call_.tables.Of(preset);
        if (!tables.gain && !tables.offset && !tables.replace && !call_.clip) return source + first;
        TFrameCorrection(correct_, source, sizeof(T), sizeof(T)).Block(tables, first, count, room);
        return room;
    }

    const SCall& call_;
    const SWalk& walk_;
    const Correct& correct_;
    bool inPlace_ = false;
    bool mapped_ = false;
};

}  // namespace

bool Abate(EDataType type, void* const sources[], u32 count, void* destination, u8* status, const bool presetValid[8],
           const u8 order[8], const u16 low[8], const u16 high[8], EAbateMode mode, float* const gains[],
           i16* const offsets[], u32* const replaces[], bool clip, double minimum, double maximum) {
    if (type != UInt16 && type != Flt32) return false;
    const SWalk walk(presetValid, order, mode);
    if (walk.count == 0) return false;
    const SCall call{sources, count, destination, status, walk.fromLast ? low : high, {gains, offsets, replaces}, clip};
    if (type == UInt16) {
        TMerge<u16, CMergeCorrector>(call, walk, CMergeCorrector(clip, minimum, maximum))();
    } else {
        TMerge<float, CNucCorrector>(call, walk, CNucCorrector(Flt32, Flt32, clip, minimum, maximum))();
    }
    return true;
}

}  // namespace ovix::reduce
