#include "measure/recordings/blocks.h"

#include "measure/recordings/recording_file.h"
#include "measure/sources/input_file.h"

namespace ovix::measure {

using reduce::SInfoFileBlock;

std::vector<SBlock> BlocksOf(const std::filesystem::path& path) {
    const auto input = std::make_shared<CInputFile>(path);
    if (!input->IsRegular() || !CRecordingFile::Recognises(input->Get(0, CRecordingFile::MagicBytes))) return {};
    const CRecordingFile file(input);
    std::vector<SBlock> blocks;
    for (const SInfoFileBlock& header : file.Blocks()) {
        const bool isPixels = header.size == SInfoFileBlock::ToEndOfFile;
        const bool isFree = header.typeID == CGUID::Empty;
        SInfoFileBlock nameOnly = header;
        nameOnly.preset = reduce::IReduceObject::NoPreset;
        SBlock block{.header = header, .name = BlockText(nameOnly), .bytes = header.size};
        if (isPixels) block.bytes = input->Size() - header.dataOffset;
        block.known = isPixels || isFree || !reduce::reduceObjectFactory()->GetNameFromTypeID(header.typeID).IsEmpty();
        if (!isPixels && !isFree) block.crcRight = file.CrcOf(header) == header.crc;
        blocks.push_back(std::move(block));
    }
    return blocks;
}

}  // namespace ovix::measure
