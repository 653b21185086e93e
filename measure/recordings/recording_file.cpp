#include "measure/recordings/recording_file.h"

#include <cstring>

#include "measure/sources/input_file.h"
#include "measure/text.h"

namespace ovix::measure {

using reduce::SInfoFileBlock;
using reduce::SPixelsHeader;
using HeaderBytes = std::array<u8, SInfoFileBlock::HeaderBytes>;

bool CRecordingFile::Recognises(std::span<const u8> start) {
    const std::string_view magic = reduce::InfoFileHeader.name;
    return start.size() >= MagicBytes && std::memcmp(start.data(), magic.data(), MagicBytes) == 0;
}

CRecordingFile::CRecordingFile(std::shared_ptr<const IBytes> bytes) : bytes_(std::move(bytes)) {
    reduce::InfoFileDirectory directory;
    const bool whole = reduce::ScanInfoFile(Open(), directory, 0);
    blocks_.assign(directory.data(), directory.data() + directory.size());
    if (!whole) FindBreak();
    if (blocks_.empty()) return;
    const SInfoFileBlock& last = blocks_.back();
    // Either mark of the block will do, so that damage of the other can be told from its lack.
    const bool isPixels =
        last.typeID == reduce::PixelsBlockTypeID || std::strcmp(last.name, reduce::PixelsBlock.name) == 0;
    if (isPixels && last.size == SInfoFileBlock::ToEndOfFile) ReadPixels(last);
}

void CRecordingFile::FindBreak() {
    break_ = SErrorFacts{.id = EError::BlocksBroken, .file = Name()};
    if (blocks_.empty()) {
        break_->offset = 0;
        break_->problem = "the file header is damaged";
        HeaderBytes wanted;
        HeaderBytes found{};
        reduce::WriteInfoFileBlock(wanted.data(), reduce::InfoFileHeader);
        bytes_->ReadAt(0, found);
        if (found != wanted || bytes_->Size() <= wanted.size()) return;
    }
    u64 end = SInfoFileBlock::HeaderBytes;
    if (!blocks_.empty()) {
        const SInfoFileBlock& last = blocks_.back();
        if (!EndsInside(last)) {
            break_->block = BlockText(last);
            break_->offset = last.headerOffset;
            break_->problem = "the block ends behind the file";
            break_->expected = Say("at most ", bytes_->Size() - last.dataOffset, " bytes");
            break_->found = Say(last.size);
            return;
        }
        end = last.dataOffset + last.size;
    }
    break_->offset = end;
    break_->problem = {};
    break_->expected = Say("a block header of ", SInfoFileBlock::HeaderBytes, " bytes");
    break_->found = Say("the end of the file after ", bytes_->Size() - end);
}

void CRecordingFile::ReadPixels(const SInfoFileBlock& block) {
    pixelsBlock_ = block;
    const TSharedPtr<IFile> file = Open();
    file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
    hasPixels_ = reduce::ReadPixelsHeader(file, block.version, pixels_);
    if (hasPixels_) return;
    break_ = SErrorFacts{.id = EError::BlocksBroken,
                         .file = Name(),
                         .block = BlockText(block),
                         .offset = block.dataOffset,
                         .expected = Say("a record of ", reduce::PixelsHeaderBytes(block.version), " bytes"),
                         .found = Say("the end of the file after ", bytes_->Size() - block.dataOffset)};
}

bool CRecordingFile::FindPixelsBehindBreak() {
    // Its header begins with its name and its type id, wherever it stands.
    HeaderBytes header;
    reduce::WriteInfoFileBlock(header.data(), reduce::PixelsBlock);
    const auto mark = std::span(header).first(48);
    std::vector<u8> window(std::size_t{1} << 20);
    u64 at = SInfoFileBlock::HeaderBytes;
    while (!hasPixels_ && at < bytes_->Size()) {
        const std::size_t read = bytes_->ReadAt(at, window);
        const auto end = window.begin() + static_cast<std::ptrdiff_t>(read);
        const auto found = std::search(window.begin(), end, mark.begin(), mark.end());
        if (found == end) {
            if (read < window.size()) break;
            at += read - (mark.size() - 1);
            continue;
        }
        at += static_cast<u64>(found - window.begin());
        const TSharedPtr<IFile> file = Open();
        SInfoFileBlock block;
        file->Seek(static_cast<i64>(at), IFile::FromStart);
        if (reduce::ReadInfoFileBlock(file, block)) ReadPixels(block);
        ++at;
    }
    return hasPixels_;
}

CRecordingFile OpenRecording(const std::filesystem::path& path) {
    auto input = std::make_shared<CInputFile>(path);
    if (CRecordingFile::Recognises(input->Get(0, CRecordingFile::MagicBytes))) return CRecordingFile(std::move(input));
    throw CError({.id = EError::UnknownFormat,
                  .file = input->Name(),
                  .offset = 0,
                  .expected = Say("a recording, which begins with \"", reduce::InfoFileHeader.name, "\""),
                  .found = "something else"});
}

bool IsUnpacked(const SPixelsHeader& pixels) {
    return pixels.packetWidth == pixels.frameWidth && pixels.packetHeight == pixels.frameHeight && !pixels.packetExtra;
}

std::string BlockText(const SInfoFileBlock& block) {
    std::string text = block.name;
    if (text.empty()) text = block.typeID == CGUID::Empty ? "free" : "without a name";
    return block.preset == reduce::IReduceObject::NoPreset ? text : Say(text, " (preset ", block.preset, ")");
}

}  // namespace ovix::measure
