// Info files and recordings with every kind of object, damaged in every byte and cut at every length: the readers
// answer, and take no memory by what a damaged number says.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "core/file.h"
#include "core/process.h"
#include "reduce/files/acquisition_file.h"
#include "reduce/files/info_file.h"
#include "reduce/objects/reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/correction_objects.h"
#include "support/byte_writer.h"

namespace {

/// The largest block of memory that was asked for, by `new` or from the library's own allocator.
std::size_t largest = 0;

}  // namespace

// Each form by itself, as the address sanitizer has its own of those that are left out.
void* operator new(std::size_t size) {
    if (void* memory = ovix::Alloc(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return ovix::Alloc(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return ovix::Alloc(size); }
// Out of line, as g++ takes an inlined pair of `new` and `free` for a mistake.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

// These stand before those of the library, for its own calls too.
void* ovix::Alloc(std::size_t size) { return Realloc(nullptr, size ? size : 1); }
void* ovix::Realloc(void* pointer, std::size_t size) {
    largest = std::max(largest, size);
    return std::realloc(pointer, size);
}

namespace ovix::reduce {
namespace {

using Bytes = std::vector<u8>;

/// A block's list and an object take something even of the smallest file.
constexpr std::size_t kAlways = 4096;

/// A recording with one object of every class that persists, tables and calibrations filled.
Bytes EveryKind() {
    CReduceObjectArray array;
    array.GetSourceInfo(true)->cameraName = L"camera";
    const CReduceObjectFactory& factory = *reduceObjectFactory();
    for (u32 i = 0; i < factory.GetEntryCount(); ++i)
        array.GetObjectOfType(factory.GetEntryAt(i).extra.typeID, -1, true)->valid = true;
    array.GetCorrection(2, true)->Create(5, 3, 2, 7);
    CRCalFile& cal = array.Get<CRCalReduceObject>(-1, false)->cal;
    EXPECT_TRUE(cal.SetPolynomial(0, 1, {1.0, 2.0}) && cal.SetLookup(1, {1.0, 2.0}, {300.0, 310.0}) &&
                cal.SetBackgroundFile(2, 2, 1, {5.0, 6.0}));
    CMemFile memory;
    const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
    EXPECT_TRUE(StartKRTFile(file, array, true) && file->WriteZeros(200));
    return {memory.GetData(), memory.GetData() + memory.GetSize()};
}

/// Runs all readers over the bytes, and answers the largest block of memory that they took.
std::size_t ReadAllWays(const u8* bytes, std::size_t size) {
    CMemFile memory;
    Bytes copy(bytes, bytes + size);
    memory.Attach(copy.data(), static_cast<u32>(size), false);
    const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
    largest = 0;
    CReduceObjectArray array;
    InfoFileDirectory blocks;
    for (const u32 flags : {0u, u32{PersistWithoutTables}}) {
        file->SeekToBegin();
        LoadInfoFile(file, array, blocks, flags);
    }
    file->SeekToBegin();
    if (ScanInfoFile(file, blocks, 0) && blocks.size()) {
        const SInfoFileBlock& last = blocks[blocks.size() - 1];
        SPixelsHeader header;
        file->Seek(static_cast<i64>(last.dataOffset), IFile::FromStart);
        ReadPixelsHeader(file, last.version, header);
    }
    const u32 counts[4] = {1, 2, 3, 4};
    UpdateInfoFile(file, counts, true);
    return largest;
}

TEST(Damage, TheWatchSeesBothAllocators) {
    largest = 0;
    ::operator delete(::operator new(12345));  // unlike the expressions, never optimised away
    EXPECT_EQ(largest, 12345u);
    CMemFile memory;
    ASSERT_TRUE(memory.SetSize(54321));
    EXPECT_EQ(largest, 54321u);
}

TEST(Damage, NoFlippedByteAndNoTruncationTakesMuchMemory) {
    Bytes bytes = EveryKind();
    ASSERT_GT(bytes.size(), 8000u);
    EXPECT_LE(ReadAllWays(bytes.data(), bytes.size()), 2 * bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (const u8 bits : {u8{0x01}, u8{0x80}}) {
            bytes[i] ^= bits;
            EXPECT_LE(ReadAllWays(bytes.data(), bytes.size()), 2 * bytes.size()) << "offset " << i;
            bytes[i] ^= bits;
        }
    }
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_LE(ReadAllWays(bytes.data(), size), 2 * size + kAlways) << "size " << size;
}

/// Old source infos without data of their own, which all read the same name from what stands behind them.
TEST(Damage, BlocksThatReadEachOthersDataDoNotMultiplyTheFile) {
    test::CByteWriter w;
    w.Text("QUOR KRT-LM File", 32).Guid("{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"_guid).U32(4096).U8(255).U64(~u64{0});
    w.U32(0).U64(0).U32(0);
    constexpr u64 kBlocks = 100, kStart = 4 + 4, kTail = 1 << 16;
    for (u64 left = kBlocks; left-- > 0;) {
        w.Text("SourceInfo", 32).Guid(CSourceInfoReduceObject::typeID).U32(0x10000).U8(255).U64(~u64{0}).U32(3);
        w.U64(kStart).U32(0);
        w.U32(0).U32((77 + kStart) * left + kTail / 2);  // `sourceBits`, the length of a name that ends in the tail
    }
    w.Zeros(kTail);
    CMemFile memory;
    memory.WriteBytes(w.bytes.data(), static_cast<u32>(w.bytes.size()));
    memory.SeekToBegin();
    CReduceObjectArray array;
    EXPECT_FALSE(LoadInfoFile(BorrowShared<IFile>(memory), array, 0));
    EXPECT_TRUE(array.GetSize() >= 1 && array.GetSize() <= 4);
}

}  // namespace
}  // namespace ovix::reduce
