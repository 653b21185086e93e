#include "reduce/files/info_file.h"

#include <algorithm>
#include <cstring>

#include "core/record.h"
#include "reduce/objects/source_info_reduce_object.h"

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

/// Writes an object's block, header and data.
bool WriteObjectBlock(const TSharedPtr<IFile>& file, IReduceObject& object, u32 flags) {
    SInfoFileBlock block;
    if (!FillFromObject(block, object, flags)) return false;
    StrCpy(block.name, CString(object.GetName()).GetUTF8(), sizeof block.name);
    return WriteInfoFileBlock(file, block) && object.Save(file, flags);
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

bool WriteFreeInfoFileBlock(TSharedPtr<IFile> file, u64 size) {
    return WriteInfoFileBlock(file, FreeInfoFileBlock(size)) && file->WriteZeros(size);
}

namespace {

/// The presets whose counts a recording keeps.
constexpr u8 kCountedPresets = 4;

bool HoldsTables(const GUID& type) { return type == CorrectionTypeID || type == UserCalibrationTypeID; }

bool ReadFileHeader(const TSharedPtr<IFile>& file) {
    u8 found[SInfoFileBlock::HeaderBytes];
    u8 expected[SInfoFileBlock::HeaderBytes];
    WriteInfoFileBlock(expected, InfoFileHeader);
    return file->ReadBytes(found, sizeof found) && std::memcmp(found, expected, sizeof found) == 0;
}

/// To the end of a block's data; false when that lies behind the end of the file.
bool SeekBehind(const TSharedPtr<IFile>& file, const SInfoFileBlock& block) {
    if (!file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart) || block.size > file->GetRemaining())
        return false;
    return file->Seek(static_cast<i64>(block.dataOffset + block.size), IFile::FromStart);
}

void SetIdentity(IReduceObject& object, const SInfoFileBlock& block) {
    object.preset = block.preset;
    object.frameNumber = block.frame;
    object.valid = (block.flags & BlockValid) != 0;
}

/// Objects may read past the end of their blocks, but together never more than the file holds once more: otherwise
/// small blocks whose objects all read the same large rest of the file would multiply it in memory.
class CObjectLoader {
  public:
    CObjectLoader(const TSharedPtr<IFile>& file, u32 flags)
        : file_(file), flags_(flags), surplus_(file->GetPosition() + file->GetRemaining()) {}

    /// Appends the block's object if there is a class for it that can read it; false when too much was read.
    bool Load(const SInfoFileBlock& block, CReduceObjectArray& array) {
        const TSharedPtr<IReduceObject> object = reduceObjectFactory()->CreateByTypeID(block.typeID);
        if (!object) return true;
        SetIdentity(*object, block);
        if (object->Load(file_, block.version, flags_)) array.Add(object);
        SetIdentity(*object, block);  // a `Load` that begins with `Default` cannot lose it
        const u64 read = std::max(file_->GetPosition(), block.dataOffset) - block.dataOffset;
        const u64 beyond = read > block.size ? read - block.size : 0;
        surplus_ -= std::min(surplus_, beyond);
        return surplus_ != 0;
    }

  private:
    const TSharedPtr<IFile>& file_;
    u32 flags_;
    u64 surplus_;
};

/// Calls `visit(block)` for every block behind the file header, which has been read; a visit may move the file, and
/// ends the reading with false.
template <class Visitor>
bool ForEachBlock(const TSharedPtr<IFile>& file, Visitor&& visit) {
    for (u64 remaining = 0;;) {
        if (!file->FindRemaining(remaining)) return false;
        if (remaining == 0) return true;
        SInfoFileBlock block;
        if (!ReadInfoFileBlock(file, block)) return false;
        if (!visit(block)) return false;
        if (block.size == SInfoFileBlock::ToEndOfFile) return true;
        if (!SeekBehind(file, block)) return false;
    }
}

/// Opens a path and goes on with the file; false when it cannot be opened.
template <class Operation>
bool WithFile(IFileSystem* fileSystem, const CString& path, u32 mode, Operation&& operation) {
    const TSharedPtr<IFile> file = fileSystem->Open(path, mode);
    return file && operation(file);
}

}  // namespace

bool CreateInfoFile(TSharedPtr<IFile> file) { return WriteInfoFileBlock(file, InfoFileHeader); }

bool SaveInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, u32 flags) {
    if (!CreateInfoFile(file)) return false;
    for (const TSharedPtr<IReduceObject>& object : array) {
        if (!object || ((flags & PersistWithoutTables) && HoldsTables(object->GetTypeID()))) continue;
        if (object->ShouldPersist(flags) && !WriteObjectBlock(file, *object, flags)) return false;
    }
    return true;
}

bool SaveInfoFile(CString path, CReduceObjectArray& array, u32 flags) {
    return SaveInfoFile(FileSystem.GetInstance(), path, array, flags);
}

bool SaveInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array, u32 flags) {
    return WithFile(fileSystem, path, IFileSystem::CreateForWriting,
                    [&](const TSharedPtr<IFile>& file) { return SaveInfoFile(file, array, flags) && file->Flush(); });
}

bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, InfoFileDirectory& blocks, u32 flags) {
    if (!ReadFileHeader(file)) return false;
    array.Reset();
    blocks.Empty();
    CObjectLoader loader(file, flags);
    return ForEachBlock(file, [&](const SInfoFileBlock& block) {
        if ((flags & PersistWithoutTables) && HoldsTables(block.typeID)) return true;  // nor is it listed
        blocks.Add(block);
        return loader.Load(block, array);
    });
}

bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, u32 flags) {
    InfoFileDirectory ignored;
    return LoadInfoFile(file, array, ignored, flags);
}

bool LoadInfoFile(CString path, CReduceObjectArray& array, u32 flags) {
    return LoadInfoFile(FileSystem.GetInstance(), path, array, flags);
}

bool LoadInfoFile(CString path, CReduceObjectArray& array, InfoFileDirectory& blocks, u32 flags) {
    return LoadInfoFile(FileSystem.GetInstance(), path, array, blocks, flags);
}

bool LoadInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array, u32 flags) {
    InfoFileDirectory ignored;
    return LoadInfoFile(fileSystem, path, array, ignored, flags);
}

bool LoadInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array, InfoFileDirectory& blocks,
                  u32 flags) {
    return WithFile(fileSystem, path, IFileSystem::OpenForReading,
                    [&](const TSharedPtr<IFile>& file) { return LoadInfoFile(file, array, blocks, flags); });
}

bool ScanInfoFile(TSharedPtr<IFile> file, InfoFileDirectory& blocks, u32) {
    if (!ReadFileHeader(file)) return false;
    blocks.Empty();
    return ForEachBlock(file, [&](const SInfoFileBlock& block) { return blocks.Add(block); });
}

bool ScanInfoFile(CString path, InfoFileDirectory& blocks, u32 flags) {
    return ScanInfoFile(FileSystem.GetInstance(), path, blocks, flags);
}

bool ScanInfoFile(IFileSystem* fileSystem, CString path, InfoFileDirectory& blocks, u32 flags) {
    return WithFile(fileSystem, path, IFileSystem::OpenForReading,
                    [&](const TSharedPtr<IFile>& file) { return ScanInfoFile(file, blocks, flags); });
}

namespace {

bool PatchSourceInfo(const TSharedPtr<IFile>& file, SInfoFileBlock& block, const u32* counts, bool unpacked) {
    CMemFile memory;
    const TSharedPtr<IFile> data = BorrowShared<IFile>(memory);
    const u32 size = static_cast<u32>(block.size);
    if (size != block.size || !memory.SetSize(size)) return false;
    if (!file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart) || !file->ReadBytes(memory.GetData(), size)) {
        return false;
    }
    CSourceInfoReduceObject source;
    if (!source.Load(data, block.version, 0)) return false;
    // Patched as bytes, never saved anew: what a later version wrote into the record survives. Records of the older
    // forms are too short for these two, and only get their CRC again.
    CSourceInfoReduceObject::UpdateNumFrames(memory.GetData(), size, counts, kCountedPresets);
    if (unpacked) {
        CSourceInfoReduceObject::UpdatePacketing(memory.GetData(), size, source.frameWidth, source.frameHeight, 0);
    }
    memory.SeekToBegin();
    CalcCRC32(block.crc, data);
    file->Seek(static_cast<i64>(block.headerOffset), IFile::FromStart);
    WriteInfoFileBlock(file, block);
    file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);  // also behind a header that could not be written
    file->WriteBytes(memory.GetData(), size);
    return true;
}

}  // namespace

bool UpdateInfoFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked) {
    InfoFileDirectory blocks;
    if (!file->Seek(0, IFile::FromStart) || !ScanInfoFile(file, blocks, 0)) return false;
    for (SInfoFileBlock& block : blocks) {
        if (block.typeID == CSourceInfoReduceObject::typeID && !PatchSourceInfo(file, block, counts, unpacked))
            return false;
    }
    return true;
}

}  // namespace ovix::reduce
