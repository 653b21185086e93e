#include "measure/recordings/metadata_check.h"

#include <array>
#include <cstring>

#include "measure/text.h"

namespace ovix::measure {

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
    if (ofTheSource || block.preset >= SourceInfo::MaxPresets) expected.preset = reduce::IReduceObject::NoPreset;
    if (ofTheSource) expected.frame = reduce::IReduceObject::NoFrame;
    return expected;
}

/// A check of one file.
class CMetadataCheck {
  public:
    CMetadataCheck(const CRecordingFile& file, const Report& report) : file_(file), report_(report) {}

    void Run() {
        if (!CheckHeader(reduce::InfoFileHeader, "")) return;  // behind another header nothing means what it seems to
        bool hasSource = false;
        for (const SInfoFileBlock& block : file_.Blocks()) {
            hasSource = hasSource || block.typeID == SourceInfo::typeID;
            if (!file_.IsPixels(block) && file_.EndsInside(block)) CheckBlock(block);
        }
        if (!hasSource && !file_.Blocks().empty())
            Damage(EFinding::BlockDamaged, "", SInfoFileBlock::HeaderBytes, "", "a block of the source info", "none");
        if (const auto& fault = file_.Break()) {
            Damage(EFinding::ChainBroken, fault->block, fault->offset.value_or(0), fault->problem, fault->expected,
                   fault->found);
        } else if (!file_.HasPixels()) {
            Damage(EFinding::ChainBroken, "", file_.Bytes().Size(), "", "the block of the pixels",
                   "the end of the file");
        }
        if (file_.HasPixels()) CheckPixels();
    }

  private:
    void Damage(EFinding id, std::string block, u64 offset, std::string what, std::string expected, std::string found) {
        report_({.id = id,
                 .weight = EWeight::Damage,
                 .block = std::move(block),
                 .offset = offset,
                 .what = std::move(what),
                 .expected = std::move(expected),
                 .found = std::move(found)});
    }
    bool CheckHeader(const SInfoFileBlock& expected, const std::string& name) {
        HeaderBytes found{};
        file_.Bytes().ReadAt(expected.headerOffset, found);
        const HeaderBytes wanted = BytesOf(expected);
        const SFinding place{
            .id = EFinding::HeaderDamaged, .weight = EWeight::Damage, .block = name, .offset = expected.headerOffset};
        ReportDifferences(reduce::InfoFileBlockLayout(), wanted.data(), found.data(), place,
                          name.empty() ? " in the file header" : " in the header", report_);
        return wanted == found;
    }
    void CheckBlock(const SInfoFileBlock& block) {
        const std::string name = BlockText(block);
        if (IsFree(block)) {
            SInfoFileBlock expected = reduce::FreeInfoFileBlock(block.size);
            expected.headerOffset = block.headerOffset;
            CheckHeader(expected, name);
            return;
        }
        const SLoaded loaded = Load(file_, block);
        CheckHeader(ExpectedHeader(file_, block, loaded), name);
        const u32 crc = file_.CrcOf(block);
        if (crc != block.crc)
            Damage(EFinding::BlockDamaged, name, block.dataOffset, "CRC-32 of the data", Say("0x", Hex(block.crc, 8)),
                   Say("0x", Hex(crc, 8)));
        if (loaded.object && !loaded.done)
            Damage(EFinding::BlockDamaged, name, block.dataOffset, "", "a record that can be loaded",
                   "one that cannot");
        if (!loaded.object)
            report_({.id = EFinding::UnknownBlock,
                     .weight = EWeight::Note,
                     .block = name,
                     .offset = block.headerOffset,
                     .what = "the block is of a class that nobody registered",
                     .found = Say(block.size, " bytes")});
    }
    void CheckPixels() {
        const SInfoFileBlock& block = file_.PixelsBlock();
        SInfoFileBlock expected = reduce::PixelsBlock;
        if (block.version == SPixelsHeader::VersionOldest) expected.version = block.version;
        expected.headerOffset = block.headerOffset;
        CheckHeader(expected, BlockText(expected));

        const auto source = LoadSourceInfo(file_);
        const u32 size = reduce::PixelsHeaderBytes(block.version);
        std::vector<u8> wanted(size);
        reduce::StorePixelsHeader(ExpectedPixels(file_, source.ptr()), block.version, wanted.data());
        const SFinding place{.id = EFinding::HeaderDamaged,
                             .weight = EWeight::Damage,
                             .block = BlockText(expected),
                             .offset = block.dataOffset};
        const std::vector<u8> found = file_.Bytes().Get(block.dataOffset, size);
        ReportDifferences(reduce::PixelsHeaderLayout(block.version), wanted.data(), found.data(), place,
                          " in the record", report_);
    }

    const CRecordingFile& file_;
    const Report& report_;
};

}  // namespace

void ReportDifferences(StoredLayout layout, const u8* expected, const u8* found, const SFinding& place,
                       const char* suffix, const Report& report) {
    for (const SStoredPart& part : DifferingParts(layout, expected, found)) {
        SFinding finding = place;
        finding.offset = place.offset.value_or(0) + part.offset;
        finding.what = part.name + suffix;
        finding.expected = part.Text(expected);
        finding.found = part.Text(found);
        report(std::move(finding));
    }
}

void CheckMetadata(const CRecordingFile& file, const Report& report) { CMetadataCheck(file, report).Run(); }

SInfoFileBlock ExpectedHeader(const CRecordingFile& file, const SInfoFileBlock& block) {
    return ExpectedHeader(file, block, Load(file, block));
}

SPixelsHeader ExpectedPixels(const CRecordingFile& file, const SourceInfo* source) {
    SPixelsHeader expected = file.Pixels();
    expected.version = std::min(file.PixelsBlock().version, u32{SPixelsHeader::Version});
    expected.size = expected.sizeAgain = reduce::PixelsHeaderBytes(file.PixelsBlock().version);
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

}  // namespace ovix::measure
