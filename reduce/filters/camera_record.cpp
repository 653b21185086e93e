#include "reduce/filters/camera_record.h"

#include <algorithm>

#include "core/bytes.h"
#include "core/record.h"

namespace ovix::reduce::camera_record {

namespace {

/// Every field that has a byte order, by offset; the last 320 bytes hold none.
constexpr SSwapRun kFields[] = {
    {0, 14, 2},
    {28, 9, 4},
    {80, 1, 4},
    {88, 23, 4},
    {180, 5, 2},
    {364, 1, 4},
    {432, 2, 2},
    {436, 7, 4},
    {464, 2, 2},
    {488, 1, 4},
    {556, 2, 2},
    {560, 7, 4},
    {588, 2, 2},
    {612, 1, 4},
    {680, 2, 2},
    {684, 7, 4},
    {712, 2, 2},
    {736, 2, 4},
    {776, 2, 4},
    {784, 4, 2},
    {792, 2, 4},
    {824, 2, 4},
    {832, 1, 2},
    {872, 2, 4},
    {880, 3, 2},
    {900, 2, 4},
    {908, 1, 2},
    {912, 8, 4},
    {960, 3, 2},
    {968, 1, 4},
    {972, 6, 2},
    {1100, 2, 2},
    {1104, 2, 4},
    {1112, 2, 2},
    {1116, 1, 4},
    {1120, 6, 2},
    // Beyond the short record: two tables of 20 rows, of 28 and of 20 bytes.
    {1148, 1, 4, 20, 28},
    {1168, 2, 4, 20, 28},
    {1708, 1, 4, 20, 20},
};

constexpr std::size_t FieldsBefore(u32 end) {
    return static_cast<std::size_t>(
        std::count_if(std::begin(kFields), std::end(kFields), [=](const SSwapRun& run) { return run.offset < end; }));
}

/// No field reaches into its neighbour, and none across the end of the short record.
constexpr bool IsInOrder() {
    for (std::size_t i = 0; i + 1 < FieldsBefore(kShortSize); ++i) {
        if (kFields[i].offset + kFields[i].fields * kFields[i].width > kFields[i + 1].offset) return false;
    }
    return true;
}
static_assert(IsInOrder() && FieldsBefore(kShortSize) == 36);

}  // namespace

void Swap(u8* record) { SwapFields(record, kFields); }
void SwapShort(u8* record) { SwapFields(record, std::span(kFields).first(FieldsBefore(kShortSize))); }

}  // namespace ovix::reduce::camera_record

namespace ovix::reduce {

namespace {

using CInfo = CCurlewCameraInfoReduceObject;
using Stream =
    TMemberStream<&CInfo::record, &CInfo::recordPresent, &CInfo::digitalHeader, &CInfo::digitalHeaderPresent>;
static_assert(Stream::Size() == 2462);

}  // namespace

bool CCurlewCameraInfoReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    return blockVersion == 0x10000 && Stream::Read(*file, *this);
}

bool CCurlewCameraInfoReduceObject::Save(TSharedPtr<IFile> file, u32) { return Stream::Write(*file, *this); }

}  // namespace ovix::reduce
