#include "reduce/files/info_file_block.h"

#include "core/mem_file.h"
#include "reduce/files/object_block.h"

namespace ovix::reduce {

namespace {

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

bool ReadInfoFileBlock(TSharedPtr<IFile> file, SInfoFileBlock& block) {
    i8 preset = 0;
    block.headerOffset = file->GetPosition();
    block.dataOffset = block.headerOffset + SInfoFileBlock::HeaderBytes;
    const bool read = file->GetFixedLengthString(block.name, SInfoFileBlock::NameBytes) &&
                      file->GetGUID(block.typeID) && file->GetUInt32(block.version) && file->GetInt8(preset) &&
                      file->GetUInt64(block.frame) && file->GetUInt32(block.flags) && file->GetUInt64(block.size) &&
                      file->GetUInt32(block.crc);
    block.preset = static_cast<u8>(preset);
    return read;
}

bool WriteInfoFileBlock(TSharedPtr<IFile> file, const SInfoFileBlock& block) {
    return file->PutFixedLengthString(block.name, SInfoFileBlock::NameBytes) && file->PutGUID(block.typeID) &&
           file->PutUInt32(block.version) && file->PutInt8(static_cast<i8>(block.preset)) &&
           file->PutUInt64(block.frame) && file->PutUInt32(block.flags) && file->PutUInt64(block.size) &&
           file->PutUInt32(block.crc);
}

bool WriteInfoFileBlock(void* buffer, const SInfoFileBlock& block) {
    CMemFile memory;
    memory.Attach(static_cast<u8*>(buffer), SInfoFileBlock::HeaderBytes, false);
    return WriteInfoFileBlock(BorrowShared<IFile>(memory), block);
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
    SInfoFileBlock block = {};
    block.preset = IReduceObject::NoPreset;
    block.frame = IReduceObject::NoFrame;
    block.size = size;
    return WriteInfoFileBlock(file, block) && file->WriteZeros(size);
}

}  // namespace ovix::reduce
