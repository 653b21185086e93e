#include "reduce/pixels/get_image_data.h"

#include "core/typed_data.h"
#include "reduce/pixels/parts.h"

namespace ovix::reduce {

namespace {

/// The two typed buffers of a call, and what moves a value from one to the other.
struct SMove {
    STypedData source;
    STypedData destination;

    FConvertSpan Convert() const { return ConvertSpanFunction(source.type, destination.type); }
};

/// Repeats the first of `count` elements of `size` bytes over all of them.
void Repeat(u8* elements, std::size_t size, std::size_t count) {
    for (std::size_t i = 1; i < count; ++i) std::memcpy(elements + i * size, elements, size);
}

/// Values, and each pixel's status along; without a source status, a destination status comes out 0.
template <class Selection>
void Extract(const Selection& selection, const SMove& move, const u8* sourceStatus, u8* destinationStatus) {
    const FConvertSpan convert = move.Convert();
    const std::size_t size = ElementSize(move.source.type);
    ForEachRun(selection, [&](const auto& run) {
        SElementScratch scratch;
        convert(ViewElements(run, move.source.data, size, scratch), ElementAt(move.destination, run.out), run.count);
        if (!destinationStatus) return;
        if (sourceStatus) {
            std::memcpy(destinationStatus + run.out, ViewElements(run, sourceStatus, 1, scratch), run.count);
        } else {
            std::memset(destinationStatus + run.out, 0, run.count);
        }
    });
}

/// With both status buffers the forms of whole lines stay at column 0 of each row: every pixel of a line takes the
/// value and the status that stand there. Callers rely on it.
template <class Lines>
void ExtractFirstColumn(const Lines& lines, const SMove& move, const u8* sourceStatus, u8* destinationStatus) {
    const FConvertSpan convert = move.Convert();
    std::size_t out = 0;
    ForEachLine(lines, [&](const SScanLine& line) {
        const u32 count = CountPixels(line);
        if (!count) return;
        const std::size_t rowStart = std::size_t{line.row} * lines.width;
        convert(ElementAt(move.source, rowStart), ElementAt(move.destination, out), 1);
        Repeat(ElementAt(move.destination, out), ElementSize(move.destination.type), count);
        std::memset(destinationStatus + out, sourceStatus[rowStart], count);
        out += count;
    });
}

template <class Selection>
bool Get(const Selection& selection, const SMove& move, const u8* sourceStatus, u8* destinationStatus) {
    if (!move.Convert()) return false;
    constexpr bool wholeLines = std::is_same_v<Selection, SRectangle> || std::is_same_v<Selection, SLines>;
    if constexpr (wholeLines) {
        if (sourceStatus && destinationStatus) {
            ExtractFirstColumn(selection, move, sourceStatus, destinationStatus);
            return true;
        }
    }
    Extract(selection, move, sourceStatus, destinationStatus);
    return true;
}

}  // namespace

bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination, u8* destinationStatus,
                  const u32* indices, u32 count) {
    return Get(SIndexList{indices, count}, {source, destination}, sourceStatus, destinationStatus);
}

bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination, u8* destinationStatus, u16 width,
                  u16, SArea area) {
    return Get(SRectangle{width, area}, {source, destination}, sourceStatus, destinationStatus);
}

bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination, u8* destinationStatus, u16 width,
                  u16, const TArray<SScanLine>& lines) {
    return Get(SLines{width, lines}, {source, destination}, sourceStatus, destinationStatus);
}

bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination, u8* destinationStatus, u16 width,
                  u16, SArea area, const u8* mask, u32 maskStride) {
    return Get(SMasked{width, area, mask, maskStride}, {source, destination}, sourceStatus, destinationStatus);
}

}  // namespace ovix::reduce
