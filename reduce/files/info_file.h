#pragma once

#include "core/file_system.h"
#include "reduce/files/info_file_block.h"
#include "reduce/objects/reduce_object_array.h"

/// The info file: a header and one block for each stored object of a source (`docs/formats/info_file.md`).
///
/// All operations report by boolean and leave the file at the position where they ended. `flags` is the mask of
/// `EPersistFlags`. None takes a lock: who loads holds the array's `WriteLock`, who saves its `ReadLock`.
namespace ovix::reduce {

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
