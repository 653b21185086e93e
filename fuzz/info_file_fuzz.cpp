#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/file.h"
#include "reduce/files/acquisition_file.h"
#include "reduce/files/info_file.h"
#include "reduce/objects/source_info_reduce_object.h"

/// The readers of info files and recordings, and the patch in place, over any bytes. An input is a file.
namespace ovix::reduce {
namespace {

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "fuzz_info_file: %s\n", what);
    std::abort();
}

/// A copy of the input as a file that cannot grow.
class CInput {
  public:
    CInput(const std::uint8_t* data, std::size_t size) : bytes_(data, data + size) {
        memory_.Attach(bytes_.data(), static_cast<u32>(size), false);
    }
    TSharedPtr<IFile> AtStart() {
        memory_.SeekToBegin();
        return BorrowShared<IFile>(memory_);
    }
    u64 Size() const { return memory_.GetSize(); }
    u32 CrcOf(const SInfoFileBlock& block) const {
        return ovix::CrcOf({bytes_.data() + block.dataOffset, static_cast<u32>(block.size)});
    }

  private:
    std::vector<u8> bytes_;
    CMemFile memory_;
};

bool SamePlace(const SInfoFileBlock& a, const SInfoFileBlock& b) {
    return a.typeID == b.typeID && a.headerOffset == b.headerOffset && a.size == b.size;
}

void RequireSameBlocks(const InfoFileDirectory& a, const InfoFileDirectory& b) {
    Require(std::equal(a.begin(), a.end(), b.begin(), b.end(), SamePlace), "two readers see different blocks");
}

void ReadPixels(CInput& input, const InfoFileDirectory& blocks) {
    if (!blocks.size()) return;
    const SInfoFileBlock& last = blocks[blocks.size() - 1];
    const TSharedPtr<IFile> file = input.AtStart();
    file->Seek(static_cast<i64>(last.dataOffset), IFile::FromStart);
    SPixelsHeader header;
    if (!ReadPixelsHeader(file, last.version, header)) return;
    SFrameBlockEntry entry{header.pixelType, 1, {}};
    const bool isNew = header.FindFrameBlock(entry.id) < 0;
    const int place = header.AddFrameBlock(entry);
    Require(place < 0 || (isNew && header.FindFrameBlock(entry.id) == place), "an added frame block is not found");
}

/// What was loaded can be saved, and is then loaded again.
void SaveAndLoad(CReduceObjectArray& objects) {
    CMemFile memory;
    const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
    Require(SaveInfoFile(file, objects, 0), "loaded objects cannot be saved");
    file->SeekToBegin();
    CReduceObjectArray again;
    InfoFileDirectory blocks;
    Require(LoadInfoFile(file, again, blocks, 0), "a file that was saved cannot be loaded");
    Require(again.GetSize() == objects.GetSize() && blocks.size() == objects.GetSize(), "saving loses an object");
}

void Patch(CInput& input, const InfoFileDirectory& before) {
    const u32 counts[4] = {1, 0, 70000, ~u32{0}};
    for (const bool unpacked : {false, true}) {
        if (!UpdateInfoFile(input.AtStart(), counts, unpacked)) continue;
        InfoFileDirectory after;
        Require(ScanInfoFile(input.AtStart(), after, 0), "a patched file cannot be read");
        RequireSameBlocks(before, after);
        for (const SInfoFileBlock& block : after) {
            if (block.typeID == CSourceInfoReduceObject::typeID)
                Require(input.CrcOf(block) == block.crc, "a patched record has a wrong CRC");
        }
    }
}

}  // namespace
}  // namespace ovix::reduce

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ovix::reduce;
    CInput input(data, size);
    CReduceObjectArray objects;
    InfoFileDirectory loaded, scanned, withoutTables;
    const bool loads = LoadInfoFile(input.AtStart(), objects, loaded, 0);
    const bool scans = ScanInfoFile(input.AtStart(), scanned, 0);
    Require(scans || !loads, "a file that can be loaded cannot be scanned");
    if (loads) RequireSameBlocks(loaded, scanned);
    for (const SInfoFileBlock& block : scanned)
        Require(block.dataOffset <= input.Size(), "a block lies behind the file");
    CReduceObjectArray few;
    LoadInfoFile(input.AtStart(), few, withoutTables, PersistWithoutTables);
    ReadPixels(input, scanned);
    if (objects.GetSize()) SaveAndLoad(objects);
    if (scans) Patch(input, scanned);
    return 0;
}
