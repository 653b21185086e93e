#pragma once

#include <algorithm>
#include <concepts>
#include <cstring>
#include <type_traits>

#include "core/typed_data.h"
#include "reduce/api.h"

/// The five ways of selecting pixels of a frame, stated once.
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
///
/// `ForEachBlock` does the same with runs that are cut into blocks, for kernels that keep intermediate values on
/// the stack. `ViewElements` is `View` for a frame whose element type is known by its size alone.
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

/// Room for the gathered elements of one run, of any numeric type.
struct SElementScratch {
    alignas(64) u8 data[kRunBlock * 8];
};

/// Calls `f` with an element's size (1, 2, 4 or 8 bytes) as a constant.
template <class F>
void VisitElementSize(std::size_t size, F&& f) {
    switch (size) {
        case 1:
            return f(std::integral_constant<std::size_t, 1>());
        case 2:
            return f(std::integral_constant<std::size_t, 2>());
        case 4:
            return f(std::integral_constant<std::size_t, 4>());
        default:
            return f(std::integral_constant<std::size_t, 8>());
    }
}

/// The elements at `count` indices of a frame, one behind the other.
inline void GatherElements(const void* frame, const u32* indices, std::size_t count, void* to, std::size_t size) {
    VisitElementSize(size, [&](auto constant) {
        constexpr std::size_t kSize = constant;
        for (std::size_t i = 0; i < count; ++i) {
            std::memcpy(static_cast<u8*>(to) + i * kSize, static_cast<const u8*>(frame) + indices[i] * kSize, kSize);
        }
    });
}
/// The way back.
inline void ScatterElements(const void* from, void* frame, const u32* indices, std::size_t count, std::size_t size) {
    VisitElementSize(size, [&](auto constant) {
        constexpr std::size_t kSize = constant;
        for (std::size_t i = 0; i < count; ++i) {
            std::memcpy(static_cast<u8*>(frame) + indices[i] * kSize, static_cast<const u8*>(from) + i * kSize, kSize);
        }
    });
}

/// The run's elements of `size` bytes (1, 2, 4 or 8) as one contiguous span.
inline const void* ViewElements(const SSpan& run, const void* frame, std::size_t size, SElementScratch&) {
    return static_cast<const u8*>(frame) + run.first * size;
}
inline const void* ViewElements(const SList& run, const void* frame, std::size_t size, SElementScratch& scratch) {
    GatherElements(frame, run.indices, run.count, scratch.data, size);
    return scratch.data;
}

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

// The arguments that say a form in the exported functions, as a selection. Heights are never read.
inline SWhole SelectionOf(u32 count) { return {count}; }
inline SIndexList SelectionOf(const u32* indices, u32 count) { return {indices, count}; }
inline SRectangle SelectionOf(u16 width, u16, SArea area) { return {width, area}; }
inline SLines SelectionOf(u16 width, u16, const TArray<SScanLine>& lines) { return {width, lines}; }
inline SMasked SelectionOf(u16 width, u16, SArea area, const u8* mask, u32 stride) {
    return {width, area, mask, stride};
}

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

/// Calls `f(line)` for each row of a rectangle, or each line of a region, in visiting order.
template <class F>
void ForEachLine(const SRectangle& rectangle, F&& f) {
    const SArea& area = rectangle.area;
    for (u32 row = area.top; row <= area.bottom; ++row) f(SScanLine{static_cast<u16>(row), area.left, area.right});
}
/// Raises `CException` "Index out of bounds." when the array shrinks meanwhile.
template <class F>
void ForEachLine(const SLines& region, F&& f) {
    const u32 lineCount = region.lines.size();
    for (u32 i = 0; i < lineCount; ++i) f(region.lines.GetAt(i));
}

/// Whether the rows of a rectangle stand one behind the other in the frame.
inline bool CoversRows(const SRectangle& rectangle) {
    const SArea& area = rectangle.area;
    return area.left == 0 && area.right + 1 == rectangle.width && area.top <= area.bottom;
}

/// The number of pixels of a line; 0 for one that ends before it begins.
inline u32 CountPixels(const SScanLine& line) { return line.left > line.right ? 0 : u32{line.right} - line.left + 1; }

template <class Lines, class F>
    requires std::same_as<Lines, SRectangle> || std::same_as<Lines, SLines>
void ForEachRun(const Lines& selection, F&& f) {
    if constexpr (std::same_as<Lines, SRectangle>) {
        const SArea& area = selection.area;
        if (CoversRows(selection)) {
            const u32 rows = u32{area.bottom} - area.top + 1;
            return f(SSpan{std::size_t{area.top} * selection.width, 0, rows * selection.width});
        }
    }
    std::size_t out = 0;
    ForEachLine(selection, [&](const SScanLine& line) {
        const u32 count = CountPixels(line);
        if (count) f(SSpan{std::size_t{line.row} * selection.width + line.left, out, count});
        out += count;
    });
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

/// As `ForEachRun`, with no run longer than `Block`, which is at least `kRunBlock`.
template <u32 Block = kRunBlock, class Selection, class F>
void ForEachBlock(const Selection& selection, F&& f) {
    ForEachRun(selection, [&]<class Run>(const Run& run) {
        if constexpr (std::is_same_v<Run, SSpan>) {
            for (u32 at = 0; at < run.count; at += std::min(Block, run.count - at)) {
                f(SSpan{run.first + at, run.out + at, std::min(Block, run.count - at)});
            }
        } else {
            f(run);
        }
    });
}

/// One past the greatest frame index that a selection visits: the pixels that a frame must have for it.
std::size_t FrameEnd(const auto& selection) {
    std::size_t end = 0;
    ForEachRun(selection, [&]<class Run>(const Run& run) {
        if constexpr (std::is_same_v<Run, SSpan>) {
            end = std::max(end, run.first + run.count);
        } else {
            for (u32 i = 0; i < run.count; ++i) end = std::max(end, run.IndexAt(i) + 1);
        }
    });
    return end;
}

/// The number of pixels that a selection visits.
inline u64 CountPixels(const auto& selection) {
    u64 count = 0;
    ForEachRun(selection, [&](const auto& run) { count += run.count; });
    return count;
}

/// The presets that a source can have, and that the number of a pixel's preset may be below.
inline constexpr u32 kMapPresets = 8;

/// Pixels of a map that are looked at together for whether they have one preset: maps hold long stretches of one.
inline constexpr u32 kStretchStep = 8;
inline bool StartsStretch(const u8* presets) {
    u64 word = 0;
    static_assert(sizeof word == kStretchStep);
    std::memcpy(&word, presets, sizeof word);
    return word == presets[0] * 0x0101010101010101u;
}

/// Whether `count` bytes of a preset map name only presets that are `usable`.
OVIX_REDUCE_API bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]);

/// The same for the selected pixels of a frame's map, so that a kernel can trust it. No map means preset 0 for all.
template <class Selection>
bool HoldsOnly(const Selection& selection, const u8* presetMap, const bool (&usable)[kMapPresets]) {
    if (!presetMap) return usable[0];
    bool all = true;
    ForEachRun(selection, [&](const auto& run) {
        TScratch<u8> gathered;
        all = all && HoldsOnly(run.View(presetMap, gathered), run.count, usable);
    });
    return all;
}

}  // namespace ovix::reduce
