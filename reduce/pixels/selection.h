#pragma once

#include <algorithm>

#include "core/typed_data.h"

/// The five ways of selecting pixels of a frame, told once.
///
/// A selection is a sequence of runs. `ForEachRun(selection, f)` calls `f(run)` in visiting order; a run is either
/// `SSpan`, pixels that stand one behind the other in the frame, or `SList`, a short block of frame indices.
/// Both answer `View`, which gives any frame-sized buffer's elements of the run as one contiguous span (in place, or
/// gathered into a block on the stack), and `run.out`, the place of the run's first pixel in a compact destination. So
/// a kernel is written over spans, once, for all forms:
///
///     ForEachRun(selection, [&](const auto& run) {
///         TScratch<u8> presets;
///         Kernel(run.View(frame, scratch), run.View(presetMap, presets), dest + run.out, run.count);
///     });
namespace ovix::reduce {

/// Pixels of a run at most, where the run must be gathered: small enough for the stack and the first-level cache.
inline constexpr u32 kRunBlock = 512;

/// Room for the gathered elements of one run.
template <class T>
struct TScratch {
    alignas(64) T data[kRunBlock];
};

/// `count` pixels from frame index `first` on.
struct SSpan {
    std::size_t first;
    std::size_t out;
    u32 count;

    std::size_t IndexAt(u32 i) const { return first + i; }
    /// Null stays null.
    template <class T>
    T* View(T* frame, TScratch<std::remove_const_t<T>>&) const {
        return frame ? frame + first : nullptr;
    }
};

/// `count` pixels at the listed frame indices; `count` is at most `kRunBlock`.
struct SList {
    const u32* indices;
    std::size_t out;
    u32 count;

    std::size_t IndexAt(u32 i) const { return indices[i]; }
    template <class T>
    const T* View(const T* frame, TScratch<T>& scratch) const {
        if (!frame) return nullptr;
        for (u32 i = 0; i < count; ++i) scratch.data[i] = frame[indices[i]];
        return scratch.data;
    }
};

/// Form W: the first `count` pixels.
struct SWhole {
    u32 count;
};

/// Form L: the pixels at `count` frame indices.
struct SIndexList {
    const u32* indices;
    u32 count;
};

/// Form A: a rectangle of a frame that is `width` wide.
struct SRectangle {
    u16 width;
    SArea area;
};

/// Form S: horizontal runs in array order.
struct SLines {
    u16 width;
    const TArray<SScanLine>& lines;
};

/// Form M: the pixels of a rectangle whose byte at mask[row * stride + column] is not 0. The mask is addressed in frame
/// coordinates by its own stride.
struct SMasked {
    u16 width;
    SArea area;
    const u8* mask;
    u32 stride;
};

template <class F>
void ForEachRun(const SWhole& whole, F&& f) {
    if (whole.count) f(SSpan{0, 0, whole.count});
}

template <class F>
void ForEachRun(const SIndexList& list, F&& f) {
    for (u32 at = 0; at < list.count; at += std::min(kRunBlock, list.count - at)) {
        f(SList{list.indices + at, at, std::min(kRunBlock, list.count - at)});
    }
}

template <class F>
void ForEachRun(const SRectangle& rectangle, F&& f) {
    const SArea& area = rectangle.area;
    if (area.left > area.right) return;
    const u32 count = u32{area.right} - area.left + 1;
    std::size_t out = 0;
    for (std::size_t row = area.top; row <= area.bottom; ++row, out += count) {
        f(SSpan{row * rectangle.width + area.left, out, count});
    }
}

/// Raises `CException` "Index out of bounds." when the array shrinks meanwhile.
template <class F>
void ForEachRun(const SLines& region, F&& f) {
    std::size_t out = 0;
    const u32 lineCount = region.lines.size();
    for (u32 i = 0; i < lineCount; ++i) {
        const SScanLine line = region.lines.GetAt(i);
        if (line.left > line.right) continue;
        const u32 count = u32{line.right} - line.left + 1;
        f(SSpan{std::size_t{line.row} * region.width + line.left, out, count});
        out += count;
    }
}

/// No run spans two rows.
template <class F>
void ForEachRun(const SMasked& masked, F&& f) {
    u32 indices[kRunBlock];
    u32 n = 0;
    std::size_t out = 0;
    const auto flush = [&] {
        if (n) f(SList{indices, out, n});
        out += n;
        n = 0;
    };
    const SArea& area = masked.area;
    for (std::size_t row = area.top; row <= area.bottom; ++row) {
        for (std::size_t column = area.left; column <= area.right; ++column) {
            if (!masked.mask[row * masked.stride + column]) continue;
            indices[n++] = static_cast<u32>(row * masked.width + column);
            if (n == kRunBlock) flush();
        }
        flush();
    }
}

/// The number of pixels that a selection visits.
inline u64 CountPixels(const auto& selection) {
    u64 count = 0;
    ForEachRun(selection, [&](const auto& run) { count += run.count; });
    return count;
}

}  // namespace ovix::reduce
