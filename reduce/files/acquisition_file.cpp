#include "reduce/files/acquisition_file.h"

#include <bit>
#include <cstring>
#include <iterator>

#include "core/pixel_types.h"
#include "core/record.h"
#include "reduce/files/info_file.h"
#include "reduce/objects/source_info_reduce_object.h"

namespace ovix::reduce {

static_assert(std::endian::native == std::endian::little, "SPixelsHeader is stored as it stands in memory");

namespace {

constexpr TRecordField<SFrameBlockEntry> kFrameBlockFields[] = {
    Field<&SFrameBlockEntry::id>(0, "id"),
    Field<&SFrameBlockEntry::used>(16, "use"),
    Field<&SFrameBlockEntry::rest>(20, "rest"),
};

constexpr TRecordField<SPixelsHeader> kFields[] = {
    Field<&SPixelsHeader::size>(0, "size"),
    Field<&SPixelsHeader::version>(4, "version", EStored::Hex),
    Field<&SPixelsHeader::sizeAgain>(8, "second size"),
    Field<&SPixelsHeader::pixelType>(12, "pixel type"),
    Field<&SPixelsHeader::pixelWidth>(28, "bytes per pixel"),
    Field<&SPixelsHeader::width>(30, "width"),
    Field<&SPixelsHeader::height>(32, "height"),
    Field<&SPixelsHeader::frameWidth>(34, "width of a frame"),
    Field<&SPixelsHeader::frameHeight>(36, "height of a frame"),
    Field<&SPixelsHeader::packetWidth>(38, "width of a packet"),
    Field<&SPixelsHeader::packetHeight>(40, "height of a packet"),
    Field<&SPixelsHeader::packetExtra>(42, "third packet value"),
    Field<&SPixelsHeader::frameSize>(44, "frame size"),
    Field<&SPixelsHeader::frameSize2>(48, "second frame size"),
    Field<&SPixelsHeader::reserved1>(52, "reserved bytes"),
    SubRecords<&SPixelsHeader::frameBlocks, kFrameBlockFields>(128, "frame block"),
    Field<&SPixelsHeader::reserved2>(384, "reserved bytes"),
};
static_assert(RecordEnd(kFields) == sizeof(SPixelsHeader) && IsGapless(kFields));

constexpr TRecordField<SPixelsHeader> kFieldsV0[] = {
    Field<&SPixelsHeader::pixelType>(0, "pixel type"),
    Field<&SPixelsHeader::pixelWidth>(16, "bytes per pixel"),
    Field<&SPixelsHeader::width>(26, "width"),
    Field<&SPixelsHeader::height>(28, "height"),
    Field<&SPixelsHeader::frameWidth>(30, "width of a frame"),
    Field<&SPixelsHeader::frameHeight>(32, "height of a frame"),
    Field<&SPixelsHeader::packetWidth>(34, "width of a packet"),
    Field<&SPixelsHeader::packetHeight>(36, "height of a packet"),
    Field<&SPixelsHeader::packetExtra>(38, "third packet value"),
    Field<&SPixelsHeader::frameSize>(40, "frame size"),
};
static_assert(RecordEnd(kFieldsV0) == sizeof(SPixelsHeaderV0));

bool IsOldest(u32 blockVersion) { return blockVersion < SPixelsHeader::Version; }

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
    return WriteInfoFileBlock(file, PixelsBlock) && file->WriteBytes(&header, sizeof header);
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
    if (!IsOldest(blockVersion)) return file->ReadBytes(&header, sizeof header);
    u8 record[sizeof(SPixelsHeaderV0)];
    if (!file->ReadBytes(record, sizeof record)) return false;
    header = EmptyHeader(sizeof record, SPixelsHeader::VersionOldest);
    LoadRecord(header, kFieldsV0, record);
    header.frameSize2 = header.frameSize;
    return true;
}

StoredLayout PixelsHeaderLayout(u32 blockVersion) {
    return IsOldest(blockVersion) ? StoredLayout(kLayoutOf<kFieldsV0>) : kLayoutOf<kFields>;
}

void StorePixelsHeader(const SPixelsHeader& header, u32 blockVersion, void* record) {
    u8* bytes = static_cast<u8*>(record);
    std::memset(bytes, 0, PixelsHeaderBytes(blockVersion));
    IsOldest(blockVersion) ? SaveRecord(header, kFieldsV0, bytes) : SaveRecord(header, kFields, bytes);
}

bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, bool unpacked) {
    return SaveInfoFile(file, array, PersistInitialState) &&
           WritePixelsHeader(file, array.GetSourceInfo(false), unpacked);
}

bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, const SPixelsHeader& header) {
    return SaveInfoFile(file, array, PersistInitialState) && WritePixelsHeader(file, header);
}

bool FinishKRTFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked) {
    return UpdateInfoFile(file, counts, unpacked);
}

}  // namespace ovix::reduce
