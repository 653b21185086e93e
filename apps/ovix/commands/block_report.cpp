#include "apps/ovix/commands/block_report.h"

#include <fmt/format.h>

#include "apps/ovix/input/pixel_type_names.h"
#include "apps/ovix/pipeline/frame_time.h"
#include "apps/ovix/text_table.h"

namespace ovix::app {

using reduce::SInfoFileBlock;

namespace {

Json BlockJson(const CRecordingFile& file, const SInfoFileBlock& block) {
    const bool isPixels = block.size == SInfoFileBlock::ToEndOfFile;
    const bool isFree = block.typeID == CGUID::Empty;
    const bool isKnown = !reduce::reduceObjectFactory()->GetNameFromTypeID(block.typeID).IsEmpty();
    SInfoFileBlock nameOnly = block;
    nameOnly.preset = reduce::IReduceObject::NoPreset;
    return {{"name", BlockText(nameOnly)},
            {"type", GuidText(block.typeID)},
            {"known", isKnown || isPixels || isFree},
            {"version", block.version},
            {"preset", block.preset == reduce::IReduceObject::NoPreset ? Json() : Json(block.preset)},
            {"frame", block.frame == reduce::IReduceObject::NoFrame ? Json() : Json(block.frame)},
            {"flags", block.flags},
            {"offset", block.headerOffset},
            {"bytes", isPixels ? file.Input().Size() - block.dataOffset : block.size},
            {"crc", block.crc},
            {"crcRight", isPixels || isFree ? Json() : Json(file.CrcOf(block) == block.crc)}};
}

std::string FlagText(u32 flags) {
    std::string text = flags & reduce::BlockValid ? "valid" : "";
    if (flags & reduce::BlockReduceObject) text += text.empty() ? "object" : " object";
    if (const u32 others = flags & ~u32{reduce::BlockValid | reduce::BlockReduceObject})
        text += fmt::format(" 0x{:X}", others);
    return text.empty() ? "-" : text;
}

}  // namespace

Json BlocksJson(const CRecordingFile& file) {
    Json blocks = Json::array();
    for (const SInfoFileBlock& block : file.Blocks()) blocks.push_back(BlockJson(file, block));
    return blocks;
}

std::string BlockTable(const Json& blocks) {
    CTextTable table({{"  Block"},
                      {"Type"},
                      {"Version", CTextTable::Right},
                      {"Preset", CTextTable::Right},
                      {"Flags"},
                      {"Bytes", CTextTable::Right},
                      {"CRC-32"}});
    for (const Json& block : blocks) {
        const Json& right = block["crcRight"];
        table.Row({"  " + block["name"].get<std::string>(), block["type"],
                   fmt::format("0x{:X}", block["version"].get<u32>()),
                   block["preset"].is_null() ? "-" : block["preset"].dump(), FlagText(block["flags"].get<u32>()),
                   block["bytes"].dump(),
                   right.is_null()     ? "-"
                   : right.get<bool>() ? "right"
                                       : "wrong"});
    }
    return "\nBlocks\n" + table.Text();
}

Json RecordedSourceJson(const CRecordingFile& file, reduce::CReduceObjectArray& objects) {
    const auto info = objects.GetSourceInfo(false);
    if (!info) return nullptr;
    Json texts = Json::array();
    for (const CString* text :
         {&info->text0, &info->text1, &info->text2, &info->text3, &info->text4, &info->text5, &info->text6,
          &info->text7, &info->text8, &info->text9, &info->text10, &info->text11, &info->text12}) {
        if (!text->IsEmpty()) texts.push_back(text->GetUTF8());
    }
    Json presets = Json::array();
    u64 frames = 0;
    for (std::size_t i = 0; i < std::size(info->presets); ++i) {
        frames += info->presets[i].frameCount;
        if (info->presets[i].frameCount) presets.push_back({{"preset", i}, {"frames", info->presets[i].frameCount}});
    }
    return {{"camera", info->cameraName.GetUTF8()},
            {"time", TimeText(info->time)},
            {"texts", texts},
            {"presets", presets},
            {"finished", frames != 0 && frames == file.WholeFrames() && !file.CutBytes()}};
}

}  // namespace ovix::app
