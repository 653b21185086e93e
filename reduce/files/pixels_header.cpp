#include "reduce/files/pixels_header.h"

#include <bit>
#include <iterator>

#include "core/pixel_types.h"
#include "core/record.h"
#include "reduce/files/info_file_block.h"
#include "reduce/objects/source_info_reduce_object.h"

namespace ovix::reduce {

static_assert(std::endian::native == std::endian::little, "SPixelsHeader is stored as it stands in memory");

namespace {

constexpr SInfoFileBlock kPixelsBlock = {"Pixels",
                                         PixelsBlockTypeID,
                                         SPixelsHeader::Version,
                                         IReduceObject::NoPreset,
                                         IReduceObject::NoFrame,
                                         BlockValid,
                                         SInfoFileBlock::ToEndOfFile,
                                         0,
                                         0,
                                         0};

/// The record of the oldest files. Bytes 18 to 25 are not read.
constexpr u32 kOldestBytes = 44;
constexpr TRecordField<SPixelsHeader> kOldestFields[] = {
    Field<&SPixelsHeader::pixelType>(0),    Field<&SPixelsHeader::pixelWidth>(16),
    Field<&SPixelsHeader::width>(26),       Field<&SPixelsHeader::height>(28),
    Field<&SPixelsHeader::frameWidth>(30),  Field<&SPixelsHeader::frameHeight>(32),
    Field<&SPixelsHeader::packetWidth>(34), Field<&SPixelsHeader::packetHeight>(36),
    Field<&SPixelsHeader::packetExtra>(38), Field<&SPixelsHeader::frameSize>(40),
};
static_assert(RecordEnd(kOldestFields) == kOldestBytes);

/// Products of stored sizes keep 32 bits.
u32 FrameBytes(u32 pixelWidth, u32 height, u32 width) { return pixelWidth * height * width; }

SPixelsHeader EmptyHeader(u32 size, u32 version) {
    SPixelsHeader header = {};
    header.size = header.sizeAgain = size;
    header.version = version;
    return header;
}

}  // namespace

int SPixelsHeader::AddFrameBlock(const SFrameBlockEntry& entry) {
    for (const SFrameBlockEntry& present : frameBlocks) {
        if (present.id == entry.id) return -1;
    }
    for (int i = 0; i < static_cast<int>(std::size(frameBlocks)); ++i) {
        if (frameBlocks[i].id != CGUID::Empty || frameBlocks[i].used != 0) continue;
        frameBlocks[i] = entry;
        return i;
    }
    return -1;
}

int SPixelsHeader::FindFrameBlock(GUID id) const {
    for (int i = 0; i < static_cast<int>(std::size(frameBlocks)); ++i) {
        if (frameBlocks[i].id == id) return i;
    }
    return -1;
}

bool InitPixelsHeader(SPixelsHeader& header, TSharedPtr<CSourceInfoReduceObject> source, bool unpacked) {
    header = EmptyHeader(sizeof header, SPixelsHeader::Version);
    header.pixelType = source->pixelType;
    header.pixelWidth = PixelWidth(source->pixelType);
    header.width = source->width;
    header.height = source->height;
    header.frameWidth = source->frameWidth;
    header.frameHeight = source->frameHeight;
    header.packetWidth = unpacked ? source->frameWidth : source->packetWidth;
    header.packetHeight = unpacked ? source->frameHeight : source->packetHeight;
    header.packetExtra = unpacked ? u16{0} : source->packetExtra;
    header.frameSize = header.frameSize2 = FrameBytes(header.pixelWidth, header.packetHeight, header.packetWidth);
    return true;
}

bool WritePixelsHeader(TSharedPtr<IFile> file, const SPixelsHeader& header) {
    return WriteInfoFileBlock(file, kPixelsBlock) && file->WriteBytes(&header, sizeof header);
}

bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> source, bool unpacked) {
    const u32 frameSize =
        FrameBytes(PixelWidth(source->pixelType), unpacked ? source->frameHeight : source->packetHeight,
                   unpacked ? source->frameWidth : source->packetWidth);
    return WritePixelsHeader(file, source, source->pixelType, frameSize, unpacked);
}

bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> source, GUID pixelType,
                       u32 frameSize, bool unpacked) {
    SPixelsHeader header;
    InitPixelsHeader(header, source, unpacked);
    header.pixelType = pixelType;
    header.pixelWidth = PixelWidth(pixelType);
    header.frameSize = header.frameSize2 = frameSize;
    return WritePixelsHeader(file, header);
}

bool ReadPixelsHeader(TSharedPtr<IFile> file, u32 blockVersion, SPixelsHeader& header) {
    if (blockVersion >= SPixelsHeader::Version) return file->ReadBytes(&header, sizeof header);
    u8 record[kOldestBytes];
    if (!file->ReadBytes(record, sizeof record)) return false;
    header = EmptyHeader(kOldestBytes, SPixelsHeader::VersionOldest);
    LoadRecord(header, kOldestFields, record);
    header.frameSize2 = header.frameSize;
    return true;
}

}  // namespace ovix::reduce
