#pragma once

#include "core/visit.h"
#include "reduce/pixels/selection.h"

/// Runs of a selection cut into parts that a block in cache holds and one preset governs. Kernels that go through a
/// block (source -> working type -> destination) are written once over these, with no knowledge of form or type.
namespace ovix::reduce {

/// `count` pixels of a run from its pixel `at` on: a run again.
inline SSpan PartOf(const SSpan& run, u32 at, u32 count) { return {run.first + at, run.out + at, count}; }
inline SList PartOf(const SList& run, u32 at, u32 count) { return {run.indices + at, run.out + at, count}; }

/// The pixels of a run, in their own type: in place, or gathered into `scratch`.
inline STypedData ViewOf(const SSpan& run, STypedData frame, TScratch<u64>&) {
    return {static_cast<u8*>(frame.data) + run.first * ElementSize(frame.type), frame.type};
}
inline STypedData ViewOf(const SList& run, STypedData frame, TScratch<u64>& scratch) {
    Visit(frame.type, [&]<class T>(TElement<T>) {
        T* to = reinterpret_cast<T*>(scratch.data);
        for (u32 i = 0; i < run.count; ++i) to[i] = static_cast<const T*>(frame.data)[run.indices[i]];
    });
    return {scratch.data, frame.type};
}

/// Calls `f(part, preset)` in visiting order for parts of at most `kRunBlock` pixels of one preset each. `presets`
/// holds each frame pixel's preset; null means preset 0 for all, so that a kernel without presets is one with a single
/// preset.
template <class Selection, class F>
void ForEachPart(const Selection& selection, const u8* presets, F&& f) {
    ForEachRun(selection, [&](const auto& run) {
        TScratch<u8> gathered;
        const u8* preset = run.View(presets, gathered);
        for (u32 at = 0, count = 0; at < run.count; at += count) {
            const u32 limit = std::min(kRunBlock, run.count - at);
            for (count = preset ? 1 : limit; count < limit && preset[at + count] == preset[at];) ++count;
            f(PartOf(run, at, count), preset ? preset[at] : u8{0});
        }
    });
}

}  // namespace ovix::reduce
