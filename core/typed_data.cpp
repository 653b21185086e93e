#include "core/typed_data.h"

#include <iterator>

namespace ovix::reduce {

namespace {

/// Widths of selections wrap in 16 bits.
u16 WidthOf(u16 left, u16 right) { return static_cast<u16>(right - left + 1); }

}  // namespace

const wchar_t* UnitToString(EUnit unit) {
    static constexpr const wchar_t* kWords[] = {
        L"Counts",        L"Radiance (User)",    L"Temperature (User)",
        L"Object Signal", L"Radiance (Factory)", L"Temperature (Factory)",
        L"RGB (24-bit)",  L"RGB (48-bit)",       L"Red Channel",
        L"Green Channel", L"Blue Channel",       L"RGB Average",
    };
    return unit < std::size(kWords) ? kWords[unit] : L"Error";
}

void IndiciesToPoints(SArea area, const TArray<u32>& indices, TArray<SPoint>& points) {
    const u32 width = WidthOf(area.left, area.right);
    for (u32 j = 0; j < indices.size(); ++j) {
        points[j] = {static_cast<i32>(indices[j] % width + area.left), static_cast<i32>(indices[j] / width + area.top)};
    }
}

void IndiciesToPoints(u16 width, u16, const TArray<u32>& indices, TArray<SPoint>& points) {
    for (u32 j = 0; j < indices.size(); ++j) {
        points[j] = {static_cast<i32>(indices[j] % width), static_cast<i32>(indices[j] / width)};
    }
}

void IndiciesToPoints(const TArray<SScanLine>& lines, const TArray<u32>& indices, TArray<SPoint>& points) {
    u32 first = 0;
    for (const SScanLine& line : lines) {
        const u32 end = first + WidthOf(line.left, line.right);
        for (u32 j = 0; j < indices.size(); ++j) {
            if (indices[j] >= first && indices[j] < end) {
                points[j] = {static_cast<i32>(line.left + (indices[j] - first)), line.row};
            }
        }
        first = end;
    }
}

}  // namespace ovix::reduce
