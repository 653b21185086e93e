#include "apps/ovix/recording/recording_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "apps/ovix/recording/library_file.h"

namespace ovix::app {

using reduce::SInfoFileBlock;
using reduce::SPixelsHeader;

namespace {

constexpr std::string_view kMagic = reduce::InfoFileHeader.name;
constexpr std::size_t kMarkBytes = 48;

/// The start of the pixels' block header, by which it can be found anywhere: name and type id.
std::vector<u8> PixelsMark() {
    std::vector<u8> header(SInfoFileBlock::HeaderBytes);
    reduce::WriteInfoFileBlock(header.data(), reduce::PixelsBlock);
    header.resize(kMarkBytes);
    return header;
}

}  // namespace

bool CRecordingFile::Recognises(const CInputFile& input) {
    u8 start[kMagic.size()];
    return input.ReadAt(0, start) == sizeof start && std::memcmp(start, kMagic.data(), sizeof start) == 0;
}

CRecordingFile::CRecordingFile(std::shared_ptr<const CInputFile> input) : input_(std::move(input)) {
    if (!reduce::ScanInfoFile(Open(), blocks_, 0)) FindBreak();
    if (!blocks_.size()) return;
    const SInfoFileBlock& last = blocks_[blocks_.size() - 1];
    // Either mark of the block will do, so that damage of the other can be told from its lack.
    const bool isPixels =
        last.typeID == reduce::PixelsBlockTypeID || std::strcmp(last.name, reduce::PixelsBlock.name) == 0;
    if (isPixels && last.size == SInfoFileBlock::ToEndOfFile) ReadPixels(last);
}

TSharedPtr<IFile> CRecordingFile::Open() const { return MakeShared<CLibraryInput>(*input_); }

void CRecordingFile::FindBreak() {
    break_ = SFault{.file = Name()};
    if (!blocks_.size()) {
        break_->offset = 0;
        break_->problem = "the file header is damaged";
        if (input_->Size() <= SInfoFileBlock::HeaderBytes) return;
        u8 whole[SInfoFileBlock::HeaderBytes];
        u8 found[SInfoFileBlock::HeaderBytes];
        reduce::WriteInfoFileBlock(whole, reduce::InfoFileHeader);
        input_->ReadAt(0, found);
        if (std::memcmp(found, whole, sizeof found) != 0) return;
    }
    u64 end = SInfoFileBlock::HeaderBytes;
    if (blocks_.size()) {
        const SInfoFileBlock& last = blocks_[blocks_.size() - 1];
        const u64 left = input_->Size() - last.dataOffset;
        if (last.size > left) {
            break_->offset = last.headerOffset;
            break_->problem = fmt::format("block {} ends behind the file", BlockText(last));
            break_->expected = fmt::format("at most {} bytes", left);
            break_->found = fmt::format("{}", last.size);
            return;
        }
        end = last.dataOffset + last.size;
    }
    break_->offset = end;
    break_->problem = {};
    break_->expected = fmt::format("a block header of {} bytes", SInfoFileBlock::HeaderBytes);
    break_->found = fmt::format("the end of the file after {}", input_->Size() - end);
}

void CRecordingFile::ReadPixels(const SInfoFileBlock& block) {
    pixelsBlock_ = block;
    const TSharedPtr<IFile> file = Open();
    file->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
    hasPixels_ = reduce::ReadPixelsHeader(file, block.version, pixels_);
    if (hasPixels_) return;
    break_ = SFault{.file = Name(),
                    .offset = block.dataOffset,
                    .expected = fmt::format("a pixels record of {} bytes", PixelsRecordSize()),
                    .found = fmt::format("the end of the file after {}", input_->Size() - block.dataOffset)};
}

u32 CRecordingFile::PixelsRecordSize() const { return reduce::PixelsHeaderBytes(pixelsBlock_.version); }

bool CRecordingFile::FindPixelsBehindBreak() {
    const std::vector<u8> mark = PixelsMark();
    std::vector<u8> window(std::size_t{1} << 20);
    u64 at = SInfoFileBlock::HeaderBytes;
    while (!hasPixels_ && at < input_->Size()) {
        const std::size_t read = input_->ReadAt(at, window);
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

u32 CRecordingFile::CrcOf(const SInfoFileBlock& block) const {
    CCalcCRC32File sum;
    std::vector<u8> bytes(std::size_t{256} << 10);
    u64 left = block.size;
    for (u64 at = block.dataOffset; left;) {
        const std::size_t read = input_->ReadAt(at, {bytes.data(), std::min<u64>(left, bytes.size())});
        if (!read) break;
        sum.Write(bytes.data(), static_cast<u32>(read));
        at += read;
        left -= read;
    }
    return sum.GetCRC();
}

std::vector<u8> CRecordingFile::DataOf(const SInfoFileBlock& block, u64 most) const {
    const u64 left = input_->Size() - std::min(input_->Size(), block.dataOffset);
    std::vector<u8> bytes(std::min({most, block.size, left}));
    bytes.resize(input_->ReadAt(block.dataOffset, bytes));
    return bytes;
}

CRecordingFile OpenRecording(const std::string& name) {
    auto input = std::make_shared<CInputFile>(name);
    if (CRecordingFile::Recognises(*input)) return CRecordingFile(std::move(input));
    throw CFault({.exit = ExitFile,
                  .file = input->Name(),
                  .offset = 0,
                  .expected = fmt::format("a recording, which begins with \"{}\"", kMagic),
                  .found = "something else"});
}

bool IsUnpacked(const SPixelsHeader& pixels) {
    return pixels.packetWidth == pixels.frameWidth && pixels.packetHeight == pixels.frameHeight && !pixels.packetExtra;
}

std::string BlockText(const SInfoFileBlock& block) {
    std::string text = block.name;
    for (char& c : text) {
        if (static_cast<u8>(c) < ' ' || c == 0x7F) c = '?';
    }
    if (text.empty()) text = block.typeID == CGUID::Empty ? "free" : "without a name";
    return block.preset == reduce::IReduceObject::NoPreset ? text : fmt::format("{} (preset {})", text, block.preset);
}

}  // namespace ovix::app
