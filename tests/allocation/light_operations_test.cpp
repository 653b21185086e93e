#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>

#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "support/frame_forms.h"

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

/// Of a copy of the frame: some families write to it.
unsigned AllocationsOfAll(IFilter& filter, const test::SFrameForm& form) {
    Bytes frame = form.frame;
    const u32 size = static_cast<u32>(frame.size());
    u8 preset = 0;
    u64 counter = 0;
    CDateTime time;
    SFrameEvidence evidence;
    const unsigned before = allocations;
    filter.ParsePreset(frame.data(), form.type, form.width, 4, size, preset);
    filter.ParseTime(frame.data(), form.type, form.width, 4, size, time);
    filter.ParseFrameCounter(frame.data(), form.type, form.width, 4, size, counter);
    filter.ParseBasicInfo(frame.data(), form.type, form.width, 4, size, preset, counter, time);
    GetFrameEvidence(form.filter, frame.data(), form.type, form.width, 4, size, evidence);
    return allocations - before;
}

/// `ParseFrame` over a frame again.
unsigned AllocationsOfParsingAgain(IFilter& filter, const test::SFrameForm& form) {
    Bytes frame = form.frame;
    CReduceObjectArray objects;
    u8 preset = 0;
    unsigned before = 0;
    for (int i = 0; i < 2; ++i) {
        before = allocations;
        filter.ParseReduceObjects(frame.data(), form.type, form.width, 4, static_cast<u32>(frame.size()), objects,
                                  preset);
    }
    return allocations - before;
}

TEST(LightOperations, AllocateNothingInAnyFamily) {
    for (const test::SFrameForm& form : FrameForms()) {
        const TSharedPtr<IFilter> filter = filterFactory()->Create(form.filter);
        EXPECT_EQ(AllocationsOfAll(*filter, form), 0u) << form.name;
        if (form.evidence[0] == 'u') continue;  // without a mark a value is put in place of another
        EXPECT_EQ(AllocationsOfParsingAgain(*filter, form), 0u) << form.name << ": values that stay cost nothing";
    }
    // The count counts: a decoder's first objects do allocate.
    const unsigned before = allocations;
    CReduceObjectArray objects;
    objects.Get<CFrameInfoReduceObject>(0, true);
    EXPECT_GT(allocations, before);
}

}  // namespace
}  // namespace ovix::reduce
