#include "apps/ovix/recording/recording_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "apps/ovix/recording/stored_frames.h"

namespace ovix::app {

using reduce::SInfoFileBlock;
using reduce::SPixelsHeader;
using SourceInfo = reduce::CSourceInfoReduceObject;

namespace {

using HeaderBytes = std::array<u8, SInfoFileBlock::HeaderBytes>;

HeaderBytes BytesOf(const SInfoFileBlock& block) {
    HeaderBytes bytes;
    reduce::WriteInfoFileBlock(bytes.data(), block);
    return bytes;
}

HeaderBytes HeaderAt(const CRecordingFile& file, u64 offset) {
    HeaderBytes bytes{};
    file.Input().ReadAt(offset, bytes);
    return bytes;
}

/// What an object's class makes of its block.
struct SLoaded {
    TSharedPtr<reduce::IReduceObject> object;  ///< empty when there is no such class
    bool done = false;
    u64 size = 0;  ///< bytes that it read
};

SLoaded Load(const CRecordingFile& file, const SInfoFileBlock& block) {
    SLoaded loaded{.object = reduce::reduceObjectFactory()->CreateByTypeID(block.typeID)};
    if (!loaded.object) return loaded;
    const TSharedPtr<IFile> data = file.Open();
    data->Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
    loaded.object->preset = block.preset;
    loaded.done = loaded.object->Load(data, block.version, 0);
    loaded.size = data->GetPosition() - block.dataOffset;
    return loaded;
}

/// Records that tell their own size begin with it and with the version of the block.
u32 VersionInRecord(const CRecordingFile& file, const SInfoFileBlock& block, u32 otherwise) {
    const std::vector<u8> start = file.DataOf(block, 8);
    const bool tells = start.size() == 8 && LoadLittle<u32>(start.data()) == block.size;
    return tells ? LoadLittle<u32>(start.data() + 4) : otherwise;
}

void SetName(SInfoFileBlock& block, const CString& name) {
    std::memset(block.name, 0, sizeof block.name);
    std::strncpy(block.name, name.GetUTF8(), SInfoFileBlock::NameBytes);
}

SInfoFileBlock ExpectedHeader(const CRecordingFile& file, const SInfoFileBlock& block, const SLoaded& loaded) {
    SInfoFileBlock expected = block;
    if (!loaded.object) {
        const GUID named = reduce::reduceObjectFactory()->GetTypeIDFromName(CString(block.name));
        if (named != CGUID::Empty) expected.typeID = named;
        return expected;
    }
    SetName(expected, loaded.object->GetName());
    expected.version = VersionInRecord(file, block, std::min(block.version, loaded.object->version));
    expected.flags = reduce::BlockReduceObject | (block.flags & reduce::BlockValid);
    if (loaded.done) expected.size = loaded.size;
    const bool ofTheSource = block.typeID == SourceInfo::typeID;
    if (ofTheSource || (block.preset >= SourceInfo::MaxPresets)) expected.preset = reduce::IReduceObject::NoPreset;
    if (ofTheSource) expected.frame = reduce::IReduceObject::NoFrame;
    return expected;
}

}  // namespace

SInfoFileBlock ExpectedHeader(const CRecordingFile& file, const SInfoFileBlock& block) {
    return ExpectedHeader(file, block, Load(file, block));
}

SPixelsHeader ExpectedPixels(const CRecordingFile& file, const SourceInfo* source) {
    SPixelsHeader expected = file.Pixels();
    const bool isOldest = file.PixelsRecordSize() != sizeof(SPixelsHeader);
    expected.size = expected.sizeAgain = file.PixelsRecordSize();
    expected.version = isOldest ? SPixelsHeader::VersionOldest : SPixelsHeader::Version;
    if (source) {
        if (!PixelWidth(expected.pixelType)) expected.pixelType = source->pixelType;
        expected.width = source->width;
        expected.height = source->height;
        expected.frameWidth = source->frameWidth;
        expected.frameHeight = source->frameHeight;
        if (!IsUnpacked(expected)) {
            expected.packetWidth = source->packetWidth;
            expected.packetHeight = source->packetHeight;
            expected.packetExtra = source->packetExtra;
        }
    }
    if (const u8 bytes = PixelWidth(expected.pixelType)) expected.pixelWidth = bytes;
    bool anyBlock = false;
    for (reduce::SFrameBlockEntry& entry : expected.frameBlocks) {
        const bool named = entry.id != CGUID::Empty;
        entry.used = named ? std::max(entry.used, u32{1}) : 0;
        anyBlock = anyBlock || named;
    }
    if (!anyBlock) expected.frameSize2 = expected.frameSize;
    std::memset(expected.reserved1, 0, sizeof expected.reserved1);
    std::memset(expected.reserved2, 0, sizeof expected.reserved2);
    return expected;
}

TSharedPtr<SourceInfo> LoadSourceInfo(const CRecordingFile& file) {
    for (const SInfoFileBlock& block : file.Blocks()) {
        if (block.typeID != SourceInfo::typeID) continue;
        const SLoaded loaded = Load(file, block);
        if (loaded.done) return loaded.object.Cast<SourceInfo>();
    }
    return {};
}

bool IsWholeBlock(const CRecordingFile& file, const SInfoFileBlock& block) {
    if (file.CrcOf(block) != block.crc) return false;
    const SLoaded loaded = Load(file, block);
    return !loaded.object || loaded.done;
}

bool CRecordingCheck::Run() {
    CheckFileHeader();
    if (!good_) return false;  // behind another header nothing means what it seems to
    CheckBlocks();
    if (const auto& fault = file_.Break()) {
        Find({fault->offset.value_or(0), fault->problem, fault->expected, fault->found});
    } else if (!file_.HasPixels()) {
        Find({file_.Input().Size(), "", "the block of the pixels", "the end of the file"});
    }
    if (file_.HasPixels()) {
        CheckPixels();
        CheckFrames();
    }
    return good_;
}

void CRecordingCheck::Find(SFinding finding) {
    good_ = false;
    report_(finding);
}

void CRecordingCheck::FindDifferences(StoredLayout layout, u64 at, const std::string& of, const u8* expected,
                                      const u8* found) {
    for (const SStoredPart& part : DifferingParts(layout, expected, found))
        Find({at + part.offset, part.name + of, part.Text(expected), part.Text(found)});
}

void CRecordingCheck::CheckHeader(const SInfoFileBlock& expected, u64 at, const std::string& of) {
    FindDifferences(reduce::InfoFileBlockLayout(), at, of, BytesOf(expected).data(), HeaderAt(file_, at).data());
}

void CRecordingCheck::CheckFileHeader() { CheckHeader(reduce::InfoFileHeader, 0, " in the file header"); }

void CRecordingCheck::CheckBlocks() {
    bool hasSource = false;
    for (const SInfoFileBlock& block : file_.Blocks()) {
        const bool isPixels = file_.HasPixels() && block.headerOffset == file_.PixelsBlock().headerOffset;
        const bool endsInside = block.size <= file_.Input().Size() - std::min(file_.Input().Size(), block.dataOffset);
        hasSource = hasSource || block.typeID == SourceInfo::typeID;
        if (!isPixels && endsInside) CheckBlock(block);
    }
    if (!hasSource && file_.Blocks().size()) {
        Find({SInfoFileBlock::HeaderBytes, "", "a block of the source info", "none"});
    }
}

void CRecordingCheck::CheckBlock(const SInfoFileBlock& block) {
    const std::string name = BlockText(block);
    const bool isFree = block.typeID == CGUID::Empty && !block.name[0];
    const SLoaded loaded = Load(file_, block);
    CheckHeader(isFree ? reduce::FreeInfoFileBlock(block.size) : ExpectedHeader(file_, block, loaded),
                block.headerOffset, " of block " + name);
    const u32 crc = isFree ? block.crc : file_.CrcOf(block);
    if (crc != block.crc) {
        Find({block.dataOffset, fmt::format("CRC-32 of the data of block {}", name), fmt::format("0x{:08X}", block.crc),
              fmt::format("0x{:08X}", crc)});
    }
    if (loaded.object && !loaded.done) {
        Find({block.dataOffset, fmt::format("block {}", name), "a record that can be loaded", "one that cannot"});
    }
}

void CRecordingCheck::CheckPixels() {
    const SInfoFileBlock& block = file_.PixelsBlock();
    SInfoFileBlock header = reduce::PixelsBlock;
    if (block.version == SPixelsHeader::VersionOldest) header.version = block.version;
    CheckHeader(header, block.headerOffset, " of the block of the pixels");
    const auto source = LoadSourceInfo(file_);
    u8 expected[sizeof(SPixelsHeader)];
    u8 found[sizeof(SPixelsHeader)];
    reduce::StorePixelsHeader(ExpectedPixels(file_, source.ptr()), block.version, expected);
    reduce::StorePixelsHeader(file_.Pixels(), block.version, found);
    FindDifferences(reduce::PixelsHeaderLayout(block.version), block.dataOffset, " in the pixels record", expected,
                    found);
}

void CRecordingCheck::CheckFrames() {
    const auto source = LoadSourceInfo(file_);
    CStoredFrames frames(file_, source && source->fixedPreset);
    bool all = true;
    for (u64 i = 0; i < frames.Count(); ++i) {
        try {
            frames.Read(i);
        } catch (const CFault& fault) {
            if (fault.Exit() == ExitFile) throw;  // the system cannot read
            const SFault& facts = fault.Facts();
            Find({file_.FrameAt(i) + facts.offset.value_or(0),
                  fmt::format("frame {}{}{}", i, facts.problem.empty() ? "" : ": ", facts.problem), facts.expected,
                  facts.found});
            all = false;
        }
    }
    if (const u64 cut = file_.CutBytes()) {
        Find({file_.FrameAt(frames.Count()), fmt::format("frame {} is cut", frames.Count()),
              fmt::format("{} bytes", file_.FrameStep()), fmt::format("{}", cut)});
    }
    if (!frames.Count()) Find({file_.FramesAt(), "", "frames", "none"});
    if (all && frames.HasDecoder()) CheckCounts(frames.Counts().Data());
}

void CRecordingCheck::CheckCounts(const u32* counts) {
    for (const SInfoFileBlock& block : file_.Blocks()) {
        if (block.typeID != SourceInfo::typeID) continue;
        const auto source = Load(file_, block).object.Cast<SourceInfo>();
        if (!source) continue;
        for (u32 p = 0; p < CFrameCounts::kPresets; ++p) {
            const u32 stored = source->presets[p].frameCount;
            const u64 place = block.size == SourceInfo::RecordSize ? SourceInfo::FrameCountOffset(p) : 0;
            if (stored != counts[p]) {
                const char* hint = stored ? "" : " (none in a recording that was never finished)";
                Find({block.dataOffset + place, fmt::format("frames of preset {} in the source info{}", p, hint),
                      fmt::format("{}", counts[p]), fmt::format("{}", stored)});
            } else if (!source->fixedPreset && source->presets[p].enabled != (stored != 0)) {
                Find({block.dataOffset + place, fmt::format("use of preset {} in the source info", p),
                      stored ? "enabled" : "not enabled", stored ? "not enabled" : "enabled"});
            }
        }
    }
}

}  // namespace ovix::app
