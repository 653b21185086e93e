#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>

#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "support/dunlin_frames.h"
#include "support/k410_frames.h"
#include "support/short_record_frames.h"

/// A program of its own, as it stands in for the allocator of all libraries in the process.

namespace {

std::atomic<unsigned> allocations = 0;

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* old, std::size_t size) {
    ++allocations;
    return __libc_realloc(old, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocations;
    return __libc_memalign(alignment, size);
}

}  // extern "C"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 16, kHeight = 8;

/// Of a copy of the frame: some families write to it.
unsigned AllocationsOfAll(IFilter& filter, Bytes frame, const GUID& type) {
    const u32 size = static_cast<u32>(frame.size());
    u8 preset = 0;
    u64 counter = 0;
    CDateTime time;
    const unsigned before = allocations;
    filter.ParsePreset(frame.data(), type, kWidth, kHeight, size, preset);
    filter.ParseTime(frame.data(), type, kWidth, kHeight, size, time);
    filter.ParseFrameCounter(frame.data(), type, kWidth, kHeight, size, counter);
    filter.ParseBasicInfo(frame.data(), type, kWidth, kHeight, size, preset, counter, time);
    return allocations - before;
}

TEST(LightOperations, AllocateNothingInAnyFamily) {
    const std::vector<u16> pixels = Ramp(kWidth * kHeight);
    Bytes zeros(8192), plain = PlainFrame(pixels, {}), digital = DigitalFrame(pixels, {}, {});
    Bytes shortRecord = ShortRecordFrame(pixels, {.swapped = true});
    Bytes tomz = TomzFrame(pixels, {.timeFlags = 1}), pruv = PruvBuffer(pixels, {{.timeFlags = 1}});
    const std::initializer_list<Bytes*> frames = {&plain, &digital, &shortRecord, &tomz, &pruv, &zeros};
    for (Bytes* frame : frames) frame->resize(8192);
    for (u32 i = 0; i < filterFactory()->GetEntryCount(); ++i) {
        const auto& entry = filterFactory()->GetEntryAt(i);
        const TSharedPtr<IFilter> filter = filterFactory()->Create(entry.name);
        for (const GUID& type : entry.extra.pixelTypes) {
            for (const Bytes* frame : frames) {
                EXPECT_EQ(AllocationsOfAll(*filter, *frame, type), 0u) << entry.name.GetUTF8();
            }
        }
    }
    // The count counts: a decoder's objects do allocate.
    const unsigned before = allocations;
    CReduceObjectArray objects;
    u8 preset = 0;
    filterFactory()->Create(L"K410")->ParseReduceObjects(digital.data(), kK410GigE, kWidth, kHeight, 8192, objects,
                                                         preset);
    EXPECT_GT(allocations, before);
}

}  // namespace
}  // namespace ovix::reduce
