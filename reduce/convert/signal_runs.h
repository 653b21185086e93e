#pragma once

#include <algorithm>
#include <memory>
#include <new>

#include "reduce/convert/parallel_for.h"
#include "reduce/convert/radiometry.h"
#include "reduce/pixels/apply_lut.h"
#include "reduce/pixels/simd/lut_simd.h"

/// The buffer forms of the measurement models, stated once: a model gives `block(signals, n, out, status)`, the results
/// of at most `kSignalBlock` signals in cache, where `status` may be null.
namespace ovix::reduce {

/// Calls `part(at, n)` for stretches of at most a block that together are `count`.
template <class Part>
void ForEachBlockOf(u32 count, const Part& part) {
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kSignalBlock, count - at);
        part(at, n);
    }
}

/// All signals from `first` to `last` inclusive.
template <class Block>
void RunRange(u16 first, u16 last, float* out, u8* status, const Block& block) {
    ForEachBlockOf(first <= last ? u32{last} - first + 1 : 0, [&](u32 at, u32 n) {
        u16 signals[kSignalBlock];
        for (u32 i = 0; i < n; ++i) signals[i] = static_cast<u16>(first + at + i);
        block(signals, n, out + at, status ? status + at : nullptr);
    });
}

/// A buffer on the caller's thread.
struct SOnThisThread {
    template <class Body>
    void operator()(u32 count, const Body& body) const {
        body(0, count);
    }
};

/// The signals of a buffer one by one, `over(count, body)` saying on which threads.
template <class Block, class Over = SOnThisThread>
void RunEach(const u16* in, float* out, u8* status, u32 count, const Block& block, const Over& over = {}) {
    over(count, [&](u32 first, u32 last) {
        ForEachBlockOf(last - first, [&](u32 at, u32 n) {
            at += first;
            block(in + at, n, out + at, status ? status + at : nullptr);
        });
    });
}

/// The same results sooner, for frames: where there are twice as many pixels as signals between the least and the
/// greatest of them, these are made into a table once and looked up.
template <class Block, class Over = SOnThisThread>
void RunSignals(const u16* in, float* out, u8* status, u32 count, const Block& block, const Over& over = {}) {
    const simd::SPlaceRange range = count ? simd::RangeOf(in, count) : simd::SPlaceRange{0, 0};
    const u32 least = range.least, span = range.greatest - least + 1;
    if (count / 2 < span) return RunEach(in, out, status, count, block, over);
    // As large as any signal asks for: memory that nobody writes costs nothing. Without it goes the long way.
    constexpr u32 kEntries = 65536;
    const std::unique_ptr<float[]> values(new (std::nothrow) float[kEntries]);
    const std::unique_ptr<u8[]> flags(new (std::nothrow) u8[kEntries]);
    if (!values || !flags) return RunEach(in, out, status, count, block, over);
    over(span, [&](u32 first, u32 last) {
        const u32 from = least + first, to = least + last - 1;
        RunRange(static_cast<u16>(from), static_cast<u16>(to), values.get() + from,
                 status ? flags.get() + from : nullptr, block);
    });
    over(count, [&](u32 first, u32 last) {
        ApplyLUT({const_cast<u16*>(in) + first, UInt16}, {out + first, Flt32}, status ? status + first : nullptr,
                 last - first, values.get(), flags.get(), 0, kEntries - 1);
    });
}

}  // namespace ovix::reduce
