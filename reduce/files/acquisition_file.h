#pragma once

#include <cstddef>

#include "reduce/files/info_file.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

class CSourceInfoReduceObject;

/// A block that stands with each frame of a recording, named by a GUID. The rest is the application's.
struct SFrameBlockEntry {
    GUID id;
    u32 used;  ///< not 0 in an entry that is in use
    u8 rest[12];
};
static_assert(sizeof(SFrameBlockEntry) == 32);

/// A record that applications lay before their frames; the library only declares it.
struct SBasicFrameHeader {
    u8 bytes[32];
};

/// How the frames of a recording are laid out. Stored little-endian exactly as it stands in memory.
struct OVIX_REDUCE_API SPixelsHeader {
    static constexpr u32 Version = 0x10001;
    static constexpr u32 VersionOldest = 0x10000;

    u32 size;
    u32 version;
    u32 sizeAgain;
    GUID pixelType;
    u16 pixelWidth;  ///< bytes per pixel
    u16 width;       ///< image
    u16 height;
    u16 frameWidth;  ///< as the camera delivers it
    u16 frameHeight;
    u16 packetWidth;  ///< as stored
    u16 packetHeight;
    u16 packetExtra;
    u32 frameSize;   ///< bytes of pixel data per frame
    u32 frameSize2;  ///< equal to `frameSize` in all that is written here
    u8 reserved1[76];
    SFrameBlockEntry frameBlocks[8];
    u8 reserved2[128];

    /// The index of the entry used; -1 when the id is there already or no entry is free. The frame sizes stay: who
    /// adds a block keeps them right.
    int AddFrameBlock(const SFrameBlockEntry& entry);
    /// The index of the first entry with that id, or -1. It does not look at `used`: the zero GUID finds a free entry.
    int FindFrameBlock(GUID id) const;
};
static_assert(sizeof(SPixelsHeader) == 512 && offsetof(SPixelsHeader, pixelType) == 12 &&
              offsetof(SPixelsHeader, frameSize) == 44 && offsetof(SPixelsHeader, frameBlocks) == 128);

/// The record of the oldest files, likewise as it stands in memory.
struct SPixelsHeaderV0 {
    GUID pixelType;
    u16 pixelWidth;
    u8 notRead[8];
    u16 width;
    u16 height;
    u16 frameWidth;
    u16 frameHeight;
    u16 packetWidth;
    u16 packetHeight;
    u16 packetExtra;
    u32 frameSize;
};
static_assert(sizeof(SPixelsHeaderV0) == 44 && offsetof(SPixelsHeaderV0, width) == 26 &&
              offsetof(SPixelsHeaderV0, frameSize) == 40);

/// The type id of the "Pixels" block, which no class registers.
inline constexpr GUID PixelsBlockTypeID = "{48A16EF9-457E-47E8-9F70-5495781A1B64}"_guid;

/// The header of the "Pixels" block.
inline constexpr SInfoFileBlock PixelsBlock = {.name = "Pixels",
                                               .typeID = PixelsBlockTypeID,
                                               .version = SPixelsHeader::Version,
                                               .preset = IReduceObject::NoPreset,
                                               .frame = IReduceObject::NoFrame,
                                               .flags = BlockValid,
                                               .size = SInfoFileBlock::ToEndOfFile,
                                               .crc = 0,
                                               .headerOffset = 0,
                                               .dataOffset = 0};

/// Bytes of the record in the form that the version of the "Pixels" block names: 512, or 44 of the oldest files.
constexpr u32 PixelsHeaderBytes(u32 blockVersion) {
    return blockVersion >= SPixelsHeader::Version ? sizeof(SPixelsHeader) : sizeof(SPixelsHeaderV0);
}
/// What the record holds in that form.
OVIX_REDUCE_API StoredLayout PixelsHeaderLayout(u32 blockVersion);
/// The record in that form, in a buffer of `PixelsHeaderBytes`.
OVIX_REDUCE_API void StorePixelsHeader(const SPixelsHeader& header, u32 blockVersion, void* record);

/// Fills a header from a source info; always true. `unpacked` means that frames go to the file as the camera delivers
/// them, whatever the source says on packeting.
OVIX_REDUCE_API bool InitPixelsHeader(SPixelsHeader& header, TSharedPtr<CSourceInfoReduceObject> source, bool unpacked);

/// Write the "Pixels" block: its header and the record.
OVIX_REDUCE_API bool WritePixelsHeader(TSharedPtr<IFile> file, const SPixelsHeader& header);
OVIX_REDUCE_API bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> source,
                                       bool unpacked);
/// With a pixel type and a frame size of the caller's.
OVIX_REDUCE_API bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> source,
                                       GUID pixelType, u32 frameSize, bool unpacked);

/// Reads the record at the current position, in the form that the version of the "Pixels" block names. The record is
/// not validated. False when it is cut off.
OVIX_REDUCE_API bool ReadPixelsHeader(TSharedPtr<IFile> file, u32 blockVersion, SPixelsHeader& header);

/// Writes the metadata, marked as the source's own, and a "Pixels" block made from the array's source info, which must
/// be there.
OVIX_REDUCE_API bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, bool unpacked);
/// The same with a given header.
OVIX_REDUCE_API bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, const SPixelsHeader& header);
/// `UpdateInfoFile` with the frame counts of the first four presets.
OVIX_REDUCE_API bool FinishKRTFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked);

}  // namespace ovix::reduce
