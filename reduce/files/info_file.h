#pragma once

#include "core/file.h"
#include "core/file_system.h"
#include "core/stored_layout.h"
#include "reduce/objects/reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

/// What a block's flags say.
enum EInfoFileBlockFlags : u32 {
    BlockValid = 1,         ///< the object's `valid`
    BlockReduceObject = 2,  ///< the block holds a reduce object
};

/// The header of a block of the info file. A plain structure.
struct SInfoFileBlock {
    static constexpr u32 NameBytes = 32;
    /// Bytes of a header in the file.
    static constexpr u32 HeaderBytes = 77;
    /// The size of a block that goes on to the end of the file.
    static constexpr u64 ToEndOfFile = ~u64{0};

    char name[NameBytes + 1];  ///< terminated
    GUID typeID;
    u32 version;
    u8 preset;
    u64 frame;
    u32 flags;
    u64 size;          ///< of the data behind the header
    u32 crc;           ///< CRC-32 of the data
    u64 headerOffset;  ///< where the header stands in the file; set by readers
    u64 dataOffset;    ///< where the data stand; set by readers
};

/// What a header holds in the file.
OVIX_REDUCE_API StoredLayout InfoFileBlockLayout();

/// The header of a free block: reserved space of `size` bytes that every reader passes over.
constexpr SInfoFileBlock FreeInfoFileBlock(u64 size) {
    return {.name = {},
            .typeID = CGUID::Empty,
            .version = 0,
            .preset = IReduceObject::NoPreset,
            .frame = IReduceObject::NoFrame,
            .flags = 0,
            .size = size,
            .crc = 0,
            .headerOffset = 0,
            .dataOffset = 0};
}

/// Fills a header from an object; the offsets stay 0. False when the object cannot be saved.
OVIX_REDUCE_API bool InitInfoFileBlock(SInfoFileBlock& block, TSharedPtr<IReduceObject> object);

/// Reads a header at the current position and sets its offsets.
OVIX_REDUCE_API bool ReadInfoFileBlock(TSharedPtr<IFile> file, SInfoFileBlock& block);

/// Writes a header at the current position, or into a buffer of `HeaderBytes`.
OVIX_REDUCE_API bool WriteInfoFileBlock(TSharedPtr<IFile> file, const SInfoFileBlock& block);
OVIX_REDUCE_API bool WriteInfoFileBlock(void* buffer, const SInfoFileBlock& block);
/// Writes an object's header and data, both with the flags 0.
OVIX_REDUCE_API bool WriteInfoFileBlock(TSharedPtr<IFile> file, TSharedPtr<IReduceObject> object);
/// Writes a free block of zeros.
OVIX_REDUCE_API bool WriteFreeInfoFileBlock(TSharedPtr<IFile> file, u64 size);

/// The directory of a file: its block headers in order.
using InfoFileDirectory = TArray<SInfoFileBlock>;

/// The file header; a reader requires every field of it.
inline constexpr SInfoFileBlock InfoFileHeader = {.name = "QUOR KRT-LM File",
                                                  .typeID = "{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"_guid,
                                                  .version = 4096,
                                                  .preset = IReduceObject::NoPreset,
                                                  .frame = IReduceObject::NoFrame,
                                                  .flags = 0,
                                                  .size = 0,
                                                  .crc = 0,
                                                  .headerOffset = 0,
                                                  .dataOffset = 0};

/// Writes the file header at the current position.
OVIX_REDUCE_API bool CreateInfoFile(TSharedPtr<IFile> file);

/// Writes file header and all blocks in the order of the array, without the objects that do not persist. With
/// `PersistWithoutTables` the blocks of correction and user calibration are left out. A failure leaves the file as far
/// as it was written.
OVIX_REDUCE_API bool SaveInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, u32 flags);
OVIX_REDUCE_API bool SaveInfoFile(CString path, CReduceObjectArray& array, u32 flags);
OVIX_REDUCE_API bool SaveInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array, u32 flags);

/// Replaces the array by the objects of the file and the directory by its blocks, and stops behind the header of a
/// block without size. A block of unknown type, or whose object cannot be loaded, is listed and passed over.
///
/// False, with array and directory as they were, when the file header is not right; false, with what was loaded so
/// far, when a block header is cut off, a block ends behind the file, or objects together read more past the ends of
/// their blocks than the file holds. CRCs are not verified: they are there for the users of the directory.
OVIX_REDUCE_API bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, InfoFileDirectory& blocks,
                                  u32 flags);
OVIX_REDUCE_API bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& array, u32 flags);
OVIX_REDUCE_API bool LoadInfoFile(CString path, CReduceObjectArray& array, u32 flags);
OVIX_REDUCE_API bool LoadInfoFile(CString path, CReduceObjectArray& array, InfoFileDirectory& blocks, u32 flags);
OVIX_REDUCE_API bool LoadInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array, u32 flags);
OVIX_REDUCE_API bool LoadInfoFile(IFileSystem* fileSystem, CString path, CReduceObjectArray& array,
                                  InfoFileDirectory& blocks, u32 flags);

/// Reads the directory alone: headers only, whatever the size of the data. The flags are not looked at.
OVIX_REDUCE_API bool ScanInfoFile(TSharedPtr<IFile> file, InfoFileDirectory& blocks, u32 flags);
OVIX_REDUCE_API bool ScanInfoFile(CString path, InfoFileDirectory& blocks, u32 flags);
OVIX_REDUCE_API bool ScanInfoFile(IFileSystem* fileSystem, CString path, InfoFileDirectory& blocks, u32 flags);

/// Patches the stored source info in place: `counts` are the frame counts of the first four presets; `unpacked`
/// replaces the packet's size by the frame's. Only that block's data and CRC change. False when the scan or the loading
/// of a source info fails; blocks before it stay patched. The results of the last writes are not looked at.
OVIX_REDUCE_API bool UpdateInfoFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked);

}  // namespace ovix::reduce
