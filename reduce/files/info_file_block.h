#pragma once

#include "core/file.h"
#include "core/stored_layout.h"
#include "reduce/objects/reduce_object.h"

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

}  // namespace ovix::reduce
