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
template <class Run>
STypedData ViewOf(const Run& run, STypedData frame, SElementScratch& scratch) {
    return {const_cast<void*>(ViewElements(run, frame.data, ElementSize(frame.type), scratch)), frame.type};
}

/// Element i of a buffer.
inline u8* ElementAt(STypedData data, std::size_t i) {
    return static_cast<u8*>(data.data) + i * ElementSize(data.type);
}

/// The types of radiances and temperatures in buffers.
constexpr bool IsFloating(EDataType type) { return type == Flt32 || type == Flt64; }

/// `count` pixels of any numeric type, as double.
inline void LoadBlock(STypedData pixels, u32 count, double* values) {
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* from = static_cast<const T*>(pixels.data);
        for (u32 i = 0; i < count; ++i) values[i] = static_cast<double>(from[i]);
    });
}

/// Values to `Flt32` or `Flt64`, from element `at` of the destination on.
inline void StoreBlock(STypedData destination, std::size_t at, const double* values, u32 count) {
    if (destination.type == Flt32) {
        float* to = static_cast<float*>(destination.data) + at;
        for (u32 i = 0; i < count; ++i) to[i] = static_cast<float>(values[i]);
    } else {
        std::copy_n(values, count, static_cast<double*>(destination.data) + at);
    }
}

/// Calls `f(part, preset)` in visiting order for parts of at most `kRunBlock` pixels of one preset each. `presets`
/// holds each frame pixel's preset; null means preset 0 for all, so that a kernel without presets is one with a single
/// preset.
template <class Selection, class F>
void ForEachPart(const Selection& selection, const u8* presets, F&& f) {
    ForEachBlock(selection, [&](const auto& block) {
        TScratch<u8> gathered;
        const u8* preset = block.View(presets, gathered);
        if (!preset) return f(block, u8{0});
        for (u32 at = 0, count = 0; at < block.count; at += count) {
            for (count = 1; at + count < block.count && preset[at + count] == preset[at];) ++count;
            f(PartOf(block, at, count), preset[at]);
        }
    });
}

}  // namespace ovix::reduce
