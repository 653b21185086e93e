#include "apps/ovix/commands/block_report.h"

#include <fmt/format.h>

#include "apps/ovix/text/text_table.h"
#include "apps/ovix/units.h"

namespace ovix::app {

namespace {

Json BlockJson(const measure::SBlock& block) {
    const reduce::SInfoFileBlock& header = block.header;
    return {{"name", block.name},
            {"type", measure::GuidText(header.typeID)},
            {"known", block.known},
            {"version", header.version},
            {"preset", header.preset == reduce::IReduceObject::NoPreset ? Json() : Json(header.preset)},
            {"frame", header.frame == reduce::IReduceObject::NoFrame ? Json() : Json(header.frame)},
            {"flags", header.flags},
            {"offset", header.headerOffset},
            {"bytes", block.bytes},
            {"crc", header.crc},
            {"crcRight", block.crcRight ? Json(*block.crcRight) : Json()}};
}

std::string FlagText(u32 flags) {
    std::string text = flags & reduce::BlockValid ? "valid" : "";
    if (flags & reduce::BlockReduceObject) text += text.empty() ? "object" : " object";
    if (const u32 others = flags & ~u32{reduce::BlockValid | reduce::BlockReduceObject})
        text += fmt::format(" 0x{:X}", others);
    return text.empty() ? "-" : text;
}

}  // namespace

Json BlocksJson(std::span<const measure::SBlock> blocks) {
    Json list = Json::array();
    for (const measure::SBlock& block : blocks) list.push_back(BlockJson(block));
    return list;
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

Json RecordedSourceJson(const measure::CSource& source, reduce::CReduceObjectArray& objects) {
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
            {"time", info->time.GetTimestamp() ? Json(TimeText(measure::TimeOf(info->time))) : Json()},
            {"texts", texts},
            {"presets", presets},
            {"finished", frames != 0 && frames == source.Count() && source.Worst() != measure::EWeight::Damage}};
}

}  // namespace ovix::app
