#include "reduce/files/info_file_block.h"

#include "core/record.h"
#include "reduce/files/object_block.h"

namespace ovix::reduce {

namespace {

constexpr TRecordField<SInfoFileBlock> kFields[] = {
    CharsField<&SInfoFileBlock::name>(0, "name"),
    Field<&SInfoFileBlock::typeID>(32, "type id"),
    Field<&SInfoFileBlock::version>(48, "version", EStored::Hex),
    Field<&SInfoFileBlock::preset>(52, "preset"),
    Field<&SInfoFileBlock::frame>(53, "frame"),
    Field<&SInfoFileBlock::flags>(61, "flags"),
    Field<&SInfoFileBlock::size>(65, "size"),
    Field<&SInfoFileBlock::crc>(73, "CRC-32", EStored::Hex),
};
static_assert(RecordEnd(kFields) == SInfoFileBlock::HeaderBytes && IsGapless(kFields));

/// All of an object's header but its name.
bool FillFromObject(SInfoFileBlock& block, IReduceObject& object, u32 flags) {
    block = {};
    if (!object.CalcCRC(block.crc, block.size, flags)) return false;
    block.typeID = object.GetTypeID();
    block.version = object.version;
    block.preset = object.preset;
    block.frame = object.frameNumber;
    block.flags = BlockReduceObject | (object.valid ? BlockValid : 0u);
    return true;
}

}  // namespace

bool InitInfoFileBlock(SInfoFileBlock& block, TSharedPtr<IReduceObject> object) {
    if (!FillFromObject(block, *object, 0)) return false;
    StrCpy(block.name, CStringMB(object->GetName()), sizeof block.name);
    return true;
}

StoredLayout InfoFileBlockLayout() { return kLayoutOf<kFields>; }

bool ReadInfoFileBlock(TSharedPtr<IFile> file, SInfoFileBlock& block) {
    block.headerOffset = file->GetPosition();
    block.dataOffset = block.headerOffset + SInfoFileBlock::HeaderBytes;
    return ReadFields<kFields>(*file, block);
}

bool WriteInfoFileBlock(TSharedPtr<IFile> file, const SInfoFileBlock& block) {
    return WriteFields<kFields>(*file, block);
}

bool WriteInfoFileBlock(void* buffer, const SInfoFileBlock& block) {
    SaveRecord(block, kFields, static_cast<u8*>(buffer));
    return true;
}

bool WriteInfoFileBlock(TSharedPtr<IFile> file, TSharedPtr<IReduceObject> object) {
    return WriteObjectBlock(file, *object, 0);
}

bool WriteObjectBlock(TSharedPtr<IFile> file, IReduceObject& object, u32 flags) {
    SInfoFileBlock block;
    if (!FillFromObject(block, object, flags)) return false;
    StrCpy(block.name, CString(object.GetName()).GetUTF8(), sizeof block.name);
    return WriteInfoFileBlock(file, block) && object.Save(file, flags);
}

bool WriteFreeInfoFileBlock(TSharedPtr<IFile> file, u64 size) {
    return WriteInfoFileBlock(file, FreeInfoFileBlock(size)) && file->WriteZeros(size);
}

}  // namespace ovix::reduce
